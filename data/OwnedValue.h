#pragma once

#include <emstatus/CommandValue.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>
#include <utility>

namespace emstatus {

/// Frees everything below `value` and makes it null. Takes constant stack space, whatever the depth.
/// [any thread that owns the value]
void Release(CommandValue& value) noexcept;

/// A CommandValue that releases what it holds. Has the layout of CommandValue and nothing beside it, so it
/// can stand wherever a host expects one; move-only. [one thread at a time]
///
/// The makers throw std::bad_alloc when memory runs out or a text is longer than 2^32 - 1 bytes.
class OwnedValue : public CommandValue {
 public:
  /// Null.
  OwnedValue() noexcept : OwnedValue(CommandValue{}) {}
  OwnedValue(OwnedValue&& other) noexcept : OwnedValue(other.release()) {}
  OwnedValue& operator=(OwnedValue&& other) noexcept {
    OwnedValue taken(std::move(other));
    std::swap<CommandValue>(*this, taken);
    return *this;
  }
  OwnedValue(const OwnedValue&) = delete;
  OwnedValue& operator=(const OwnedValue&) = delete;
  ~OwnedValue() {
    // Most values are null here, having been handed on.
    if (tag != tag::kNull) Release(*this);
  }

  /// Takes over a value that came from elsewhere, a host for example.
  static OwnedValue Adopt(const CommandValue& value) noexcept { return OwnedValue(value); }
  /// Without members; nothing is allocated before the first one.
  static OwnedValue Object() noexcept;
  /// Without elements; nothing is allocated before the first one.
  static OwnedValue Array() noexcept;
  static OwnedValue UInt32(std::uint32_t number) noexcept;
  /// An integer with the tag of the smallest widths that hold it; a negative one carries signed bits only.
  static OwnedValue Integer(std::int64_t number) noexcept;
  static OwnedValue Double(double number) noexcept;
  static OwnedValue Boolean(bool truth) noexcept;
  /// A copy of `text`, which may hold zero bytes; a zero byte that does not count follows it.
  static OwnedValue Text(std::string_view text);
  /// Refers to `text`, which must outlive every holder of the value; nullptr counts as "".
  static OwnedValue Constant(const char* text) noexcept { return Reference(text != nullptr ? text : ""); }
  /// The same for a text of known length; what lies beyond 2^32 - 1 bytes is left out.
  static OwnedValue Reference(std::string_view text) noexcept {
    constexpr std::size_t kLongest = std::numeric_limits<std::uint32_t>::max();
    CommandValue value{};
    value.string = {text.data(), static_cast<std::uint32_t>(std::min(text.size(), kLongest))};
    value.tag = tag::kConstantString;
    return Adopt(value);
  }
  /// Takes over `text`, which came from malloc and goes to free.
  static OwnedValue AdoptText(char* text, std::uint32_t length) noexcept;
  /// Raw bytes in their form as data of a command: {"RAW":[n, n, ...]}.
  static OwnedValue Raw(std::span<const std::uint8_t> bytes);

  /// Hands the value over to the caller, who releases it; null stays here.
  [[nodiscard]] CommandValue release() noexcept {
    const CommandValue value = *this;
    static_cast<CommandValue&>(*this) = CommandValue{};
    return value;
  }

 private:
  explicit OwnedValue(const CommandValue& value) noexcept : CommandValue(value) {}
};

static_assert(sizeof(OwnedValue) == sizeof(CommandValue) && std::is_standard_layout_v<OwnedValue>);

}  // namespace emstatus
