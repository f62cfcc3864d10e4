#include "data/CommandValue.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace emstatus {
namespace {

constexpr CommandValue kEmpty{};

/// Makes room for one more entry. Without storage the counts of a host mean nothing and start at 0.
template <typename Entry>
void Grow(Entry*& entries, std::uint32_t& count, std::uint32_t& capacity) {
  if (entries == nullptr) count = capacity = 0;
  if (count < capacity) return;
  const std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
  if (count == most) throw std::bad_alloc();
  const std::uint32_t wanted = count == 0 ? 16 : count > most / 2 ? most : count * 2;
  void* grown = std::realloc(static_cast<void*>(entries), wanted * sizeof(Entry));
  if (grown == nullptr) throw std::bad_alloc();
  entries = static_cast<Entry*>(grown);
  capacity = wanted;
}

}  // namespace

const CommandValue& EmptyValue() noexcept {
  return kEmpty;
}

std::span<const CommandMember> Members(const CommandValue& value) noexcept {
  if (KindOf(value) != CommandKind::Object || value.object.members == nullptr) return {};
  return {value.object.members, value.object.count};
}

std::span<const CommandValue> Elements(const CommandValue& value) noexcept {
  if (KindOf(value) != CommandKind::Array || value.array.elements == nullptr) return {};
  return {value.array.elements, value.array.count};
}

std::string_view TextOf(const CommandValue& value) noexcept {
  if (KindOf(value) != CommandKind::String || value.string.text == nullptr) return {};
  return {value.string.text, value.string.length};
}

std::string_view TextUpToZero(const CommandValue& value) noexcept {
  const std::string_view text = TextOf(value);
  return text.substr(0, text.find('\0'));
}

std::uint32_t LowBits(const CommandValue& value) noexcept {
  return KindOf(value) == CommandKind::Number ? static_cast<std::uint32_t>(value.unsignedNumber) : 0;
}

const CommandValue* FindMember(const CommandValue& object, std::string_view name) noexcept {
  for (const CommandMember& member : Members(object)) {
    if (KindOf(member.name) == CommandKind::String && TextOf(member.name) == name) return &member.value;
  }
  return nullptr;
}

CommandValue* FindMember(CommandValue& object, std::string_view name) noexcept {
  return const_cast<CommandValue*>(FindMember(std::as_const(object), name));
}

const CommandValue& MemberOrEmpty(const CommandValue& object, std::string_view name) noexcept {
  const CommandValue* member = FindMember(object, name);
  return member != nullptr ? *member : EmptyValue();
}

bool SetMember(CommandValue& object, const char* constantName, OwnedValue value) {
  CommandValue* member = FindMember(object, constantName);
  if (member == nullptr) return AddMember(object, constantName, std::move(value));
  Assign(*member, std::move(value));
  return true;
}

bool AddMember(CommandValue& object, OwnedValue name, OwnedValue value) {
  if (KindOf(object) != CommandKind::Object) return false;
  CommandObject& storage = object.object;
  Grow(storage.members, storage.count, storage.capacity);
  storage.members[storage.count++] = {name.release(), value.release()};
  return true;
}

bool RemoveMember(CommandValue& object, std::string_view name) noexcept {
  CommandValue* value = FindMember(object, name);
  if (value == nullptr) return false;
  const std::span members(object.object.members, object.object.count);
  auto found = std::ranges::find_if(members, [value](const CommandMember& m) { return &m.value == value; });
  Release(found->name);
  Release(found->value);
  std::copy(found + 1, members.end(), found);
  --object.object.count;
  return true;
}

bool Append(CommandValue& array, OwnedValue value) {
  if (KindOf(array) != CommandKind::Array) return false;
  CommandArray& storage = array.array;
  Grow(storage.elements, storage.count, storage.capacity);
  storage.elements[storage.count++] = value.release();
  return true;
}

CommandValue* EnsureElement(CommandValue& array, std::uint32_t index) {
  if (KindOf(array) != CommandKind::Array) return nullptr;
  const auto count = static_cast<std::uint32_t>(Elements(array).size());
  if (index >= count && index - count >= kMostNewElements) return nullptr;
  while (Elements(array).size() <= index) Append(array, OwnedValue::Object());
  return &array.array.elements[index];
}

void Assign(CommandValue& slot, OwnedValue value) noexcept {
  Release(slot);
  slot = value.release();
}

void SetUInt32(CommandValue& slot, std::uint32_t number) noexcept {
  Assign(slot, OwnedValue::UInt32(number));
}

void SetInteger(CommandValue& slot, std::int64_t number) noexcept {
  Assign(slot, OwnedValue::Integer(number));
}

}  // namespace emstatus
