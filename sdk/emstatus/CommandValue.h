#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// The typed value in which a host and an extension module exchange commands and their data.
///
/// A value is a 16-byte payload and a tag. The tag's low byte is the kind, the higher bits qualify it.
/// Both sides grow and release values, so every array and every owned text comes from malloc or realloc
/// and goes to free. Members and elements lie in insertion order; a zero-filled value is null.
namespace emstatus {

/// Low byte of a tag.
enum class CommandKind : std::uint8_t {
  Null = 0,
  False = 1,
  True = 2,
  Object = 3,
  Array = 4,
  String = 5,
  Number = 6,
};

/// Qualifier bits of a tag.
namespace tagbit {
inline constexpr std::uint32_t kNumber = 0x200;
inline constexpr std::uint32_t kFitsInt32 = 0x400;
inline constexpr std::uint32_t kFitsUInt32 = 0x800;
inline constexpr std::uint32_t kFitsInt64 = 0x1000;
inline constexpr std::uint32_t kFitsUInt64 = 0x2000;
inline constexpr std::uint32_t kString = 0x100000;
/// The text is an owned copy, released with the value.
inline constexpr std::uint32_t kOwnedText = 0x200000;
}  // namespace tagbit

/// Tags in use.
namespace tag {
inline constexpr std::uint32_t kNull = 0;
inline constexpr std::uint32_t kFalse = 1;
inline constexpr std::uint32_t kTrue = 2;
inline constexpr std::uint32_t kObject = 3;
inline constexpr std::uint32_t kArray = 4;
/// Text that outlives the value and is not released with it.
inline constexpr std::uint32_t kConstantString = 0x100005;
inline constexpr std::uint32_t kOwnedString = 0x300005;
/// An integer from 0 to 2^31 - 1: fits all four widths.
inline constexpr std::uint32_t kUInt31 = 0x3E06;
/// An integer from 2^31 to 2^32 - 1.
inline constexpr std::uint32_t kUInt32 = 0x3A06;
}  // namespace tag

struct CommandMember;
struct CommandValue;

struct CommandObject {
  CommandMember* members;
  std::uint32_t count;
  std::uint32_t capacity;
};

struct CommandArray {
  CommandValue* elements;
  std::uint32_t count;
  std::uint32_t capacity;
};

struct CommandString {
  /// Not necessarily zero-terminated; may hold zero bytes.
  const char* text;
  /// Bytes.
  std::uint32_t length;
};

struct CommandValue {
  union {
    CommandObject object;
    CommandArray array;
    CommandString string;
    std::int64_t signedNumber;
    std::uint64_t unsignedNumber;
    double floatNumber;
  };
  std::uint32_t tag;
};

/// A name (a string value) and what it names. Names may repeat; a look-up finds the first.
struct CommandMember {
  CommandValue name;
  CommandValue value;
};

static_assert(std::is_trivially_copyable_v<CommandValue> && std::is_standard_layout_v<CommandValue>);
static_assert(sizeof(CommandValue) == 24 && alignof(CommandValue) == 8);
static_assert(offsetof(CommandValue, object) == 0 && offsetof(CommandValue, tag) == 16);
static_assert(offsetof(CommandObject, count) == 8 && offsetof(CommandObject, capacity) == 12);
static_assert(offsetof(CommandArray, count) == 8 && offsetof(CommandArray, capacity) == 12);
static_assert(offsetof(CommandString, length) == 8);
static_assert(sizeof(CommandMember) == 48 && offsetof(CommandMember, value) == 24);

}  // namespace emstatus
