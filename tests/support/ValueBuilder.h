#pragma once

#include <utility>

#include "data/Command.h"
#include "data/OwnedCommand.h"

/// Command values spelled as they nest: Object("RAW", Array(Number(1), Number(2))).
namespace emstatus::test {

inline OwnedValue Number(std::int64_t number) {
  return OwnedValue::Integer(number);
}

/// A constant string, with the zero bytes that a literal holds inside.
template <std::size_t Size>
OwnedValue Text(const char (&text)[Size]) {
  return OwnedValue::Text(std::string_view(text, Size - 1));
}

/// A number whose tag and payload are given as they are.
inline OwnedValue Tagged(std::uint32_t tag, std::uint64_t payload = 0) {
  CommandValue value{};
  value.unsignedNumber = payload;
  value.tag = tag;
  return OwnedValue::Adopt(value);
}

template <typename... Values>
OwnedValue Array(Values... values) {
  OwnedValue array = OwnedValue::Array();
  (Append(array, std::move(values)), ...);
  return array;
}

inline void AddMembers(CommandValue&) {}

template <typename... More>
void AddMembers(CommandValue& object, const char* name, OwnedValue value, More... more) {
  AddMember(object, name, std::move(value));
  AddMembers(object, std::move(more)...);
}

/// Object("name", value, "name", value, ...)
template <typename... Members>
OwnedValue Object(Members... members) {
  OwnedValue object = OwnedValue::Object();
  AddMembers(object, std::move(members)...);
  return object;
}

/// A host command with this document.
inline OwnedCommand CommandOf(OwnedValue document, std::uint32_t current = 0) {
  OwnedCommand command;
  Assign(command.document, std::move(document));
  command.current = current;
  return command;
}

/// A host command whose one command has these members: CommandWith("ST", Number(0), "DA", Text("x")).
template <typename... Members>
OwnedCommand CommandWith(Members... members) {
  return CommandOf(Object("SIP", Object("CMD", Array(Object(std::move(members)...)))));
}

}  // namespace emstatus::test
