#include "data/OwnedValue.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "data/CommandValue.h"

namespace emstatus {
namespace {

/// Where the release of an outer array goes on. Kept in the very slot whose insides are being released, so
/// that no depth of nesting needs memory of its own.
struct Outer {
  CommandValue* base;
  CommandValue* slot;
  std::uint64_t left;
};
static_assert(sizeof(Outer) == sizeof(CommandValue));

/// A member is two values side by side, so members and elements alike are a run of values.
struct Run {
  CommandValue* base = nullptr;
  std::uint64_t count = 0;
};

Run RunOf(const CommandValue& container) {
  if (KindOf(container) == CommandKind::Array) {
    const CommandArray& array = container.array;
    return {array.elements, array.elements == nullptr ? 0 : array.count};
  }
  const CommandObject& object = container.object;
  return {reinterpret_cast<CommandValue*>(object.members),
          object.members == nullptr ? 0 : 2 * std::uint64_t{object.count}};
}

void FreeText(const CommandValue& value) {
  if (value.tag == tag::kOwnedString) std::free(const_cast<char*>(value.string.text));
}

void FreeRun(Run run) {
  CommandValue* next = run.base;
  std::uint64_t left = run.count;
  Outer outer{};
  for (;;) {
    if (left == 0) {
      std::free(run.base);
      if (outer.slot == nullptr) return;
      run.base = outer.base;
      next = outer.slot + 1;
      left = outer.left;
      std::memcpy(&outer, outer.slot, sizeof(outer));
      continue;
    }
    --left;
    CommandValue& value = *next++;
    if (!IsContainer(value)) {
      FreeText(value);
      continue;
    }
    const Run inner = RunOf(value);
    std::memcpy(&value, &outer, sizeof(outer));
    outer = {run.base, &value, left};
    run = inner;
    next = inner.base;
    left = inner.count;
  }
}

CommandValue Plain(std::uint32_t tag, std::uint64_t payload = 0) noexcept {
  CommandValue value{};
  std::memcpy(&value, &payload, sizeof(payload));
  value.tag = tag;
  return value;
}

std::uint32_t TagOf(std::int64_t number) noexcept {
  constexpr std::uint32_t kInteger = 6 | tagbit::kNumber | tagbit::kFitsInt64;
  if (number < 0) {
    const bool fitsInt32 = number >= std::numeric_limits<std::int32_t>::min();
    return kInteger | (fitsInt32 ? tagbit::kFitsInt32 : 0);
  }
  if (number <= std::numeric_limits<std::int32_t>::max()) return tag::kUInt31;
  if (number <= std::numeric_limits<std::uint32_t>::max()) return tag::kUInt32;
  return kInteger | tagbit::kFitsUInt64;
}

}  // namespace

void Release(CommandValue& value) noexcept {
  if (IsContainer(value)) {
    FreeRun(RunOf(value));
  } else {
    FreeText(value);
  }
  value = CommandValue{};
}

OwnedValue OwnedValue::Object() noexcept {
  return Adopt(Plain(tag::kObject));
}

OwnedValue OwnedValue::Array() noexcept {
  return Adopt(Plain(tag::kArray));
}

OwnedValue OwnedValue::UInt32(std::uint32_t number) noexcept {
  return Integer(number);
}

OwnedValue OwnedValue::Integer(std::int64_t number) noexcept {
  return Adopt(Plain(TagOf(number), static_cast<std::uint64_t>(number)));
}

OwnedValue OwnedValue::Double(double number) noexcept {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof(bits));
  return Adopt(Plain(6 | tagbit::kNumber, bits));
}

OwnedValue OwnedValue::Boolean(bool truth) noexcept {
  return Adopt(Plain(truth ? tag::kTrue : tag::kFalse));
}

OwnedValue OwnedValue::Text(std::string_view text) {
  if (text.size() > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
  auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy == nullptr) throw std::bad_alloc();
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return AdoptText(copy, static_cast<std::uint32_t>(text.size()));
}

OwnedValue OwnedValue::AdoptText(char* text, std::uint32_t length) noexcept {
  CommandValue value{};
  value.string = {text, length};
  value.tag = tag::kOwnedString;
  return Adopt(value);
}

OwnedValue OwnedValue::Raw(std::span<const std::uint8_t> bytes) {
  OwnedValue numbers = Array();
  for (const std::uint8_t byte : bytes) Append(numbers, UInt32(byte));
  OwnedValue raw = Object();
  AddMember(raw, "RAW", std::move(numbers));
  return raw;
}

}  // namespace emstatus
