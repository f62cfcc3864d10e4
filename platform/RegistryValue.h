#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace emstatus {

enum class RegistryType : std::int32_t {
  kString = 1,
  kExpandableString = 2,
  kBinary = 3,
  kDword = 4,
  kKey = 666,  // a child key; no value has this type
};

/// A value of a registry key: its type and its data. Any type but kDword may be without data, and then lives
/// in memory only.
class RegistryValue {
 public:
  using Bytes = std::vector<std::uint8_t>;

  static RegistryValue String(std::string text);
  static RegistryValue ExpandableString(std::string text);
  static RegistryValue Binary(Bytes bytes);
  static RegistryValue Dword(std::int32_t number);
  static RegistryValue WithoutData(RegistryType type) { return RegistryValue(type); }

  RegistryType Type() const { return type_; }

  /// The text of either kind of string; nullptr for other types and without data.
  const std::string* Text() const;
  /// nullptr unless this is binary with data.
  const Bytes* Binary() const;
  /// nullptr unless this is a number.
  const std::int32_t* Number() const;

  /// How many bytes CopyTo() writes: a text with its closing zero, 4 for a number, 0 without data.
  std::size_t Size() const;
  void CopyTo(void* room) const;

  friend bool operator==(const RegistryValue&, const RegistryValue&) = default;

 private:
  explicit RegistryValue(RegistryType type) : type_(type) {}

  RegistryType type_;
  bool hasData_ = false;
  std::int32_t number_ = 0;
  std::string text_;
  Bytes bytes_;
};

}  // namespace emstatus
