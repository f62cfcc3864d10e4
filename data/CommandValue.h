#pragma once

#include <emstatus/CommandValue.h>

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include "data/OwnedValue.h"

/// Reading and changing of command values.
///
/// Values may come from a host that this library knows nothing of: kinds above 6, arrays without storage,
/// names that are no strings and any capacity are taken as they come. Reading never fails; it falls back to
/// "none" or to empty. Changing operations throw std::bad_alloc when memory runs out or a count would pass
/// 2^32 - 1, and leave the value as it was (EnsureElement: with the elements added so far). [one thread at a
/// time for a value that somebody changes]
namespace emstatus {

/// The most elements that EnsureElement adds: an index further out is a mistake or an attack.
inline constexpr std::uint32_t kMostNewElements = 65536;

/// May be none of the enumerators for a host's value.
inline CommandKind KindOf(const CommandValue& value) noexcept {
  return static_cast<CommandKind>(value.tag & 0xFF);
}

/// Whether it holds other values.
inline bool IsContainer(const CommandValue& value) noexcept {
  return KindOf(value) == CommandKind::Object || KindOf(value) == CommandKind::Array;
}

/// One null value for everybody, to stand in where nothing is found.
const CommandValue& EmptyValue() noexcept;

/// The members of an object in their order; empty for any other kind.
std::span<const CommandMember> Members(const CommandValue& value) noexcept;

/// The elements of an array in their order; empty for any other kind.
std::span<const CommandValue> Elements(const CommandValue& value) noexcept;

/// The whole text of a string; empty for any other kind. Valid as long as the value.
std::string_view TextOf(const CommandValue& value) noexcept;

/// The text of a string up to its first zero byte; empty for any other kind. Valid as long as the value.
std::string_view TextUpToZero(const CommandValue& value) noexcept;

/// The low 32 bits of a number of any width; 0 for any other kind.
std::uint32_t LowBits(const CommandValue& value) noexcept;

/// The first member with that name, or nullptr: there is none, or `object` is no object.
const CommandValue* FindMember(const CommandValue& object, std::string_view name) noexcept;
CommandValue* FindMember(CommandValue& object, std::string_view name) noexcept;

/// The same, with EmptyValue() for none.
const CommandValue& MemberOrEmpty(const CommandValue& object, std::string_view name) noexcept;

/// Puts `value` in place of the first member with that name, or else appends a member. `constantName` is
/// referred to, not copied. False when `object` is no object.
bool SetMember(CommandValue& object, const char* constantName, OwnedValue value);

/// Appends a member without looking for one of the same name. False when `object` is no object.
bool AddMember(CommandValue& object, OwnedValue name, OwnedValue value);
inline bool AddMember(CommandValue& object, const char* constantName, OwnedValue value) {
  return AddMember(object, OwnedValue::Constant(constantName), std::move(value));
}

/// Removes the first member with that name, keeping the order of the others. False when there is none.
bool RemoveMember(CommandValue& object, std::string_view name) noexcept;

/// False when `array` is no array.
bool Append(CommandValue& array, OwnedValue value);

/// Element `index`, after appending empty objects until it exists. nullptr when `array` is no array or
/// more than kMostNewElements would be needed.
CommandValue* EnsureElement(CommandValue& array, std::uint32_t index);

/// Releases what `slot` holds and puts `value` there.
void Assign(CommandValue& slot, OwnedValue value) noexcept;

void SetUInt32(CommandValue& slot, std::uint32_t number) noexcept;
void SetInteger(CommandValue& slot, std::int64_t number) noexcept;

}  // namespace emstatus
