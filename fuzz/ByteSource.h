#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace emstatus::fuzz {

/// Hands out the bytes of an input piece by piece; zeros and empty texts when they are used up.
class ByteSource {
 public:
  ByteSource(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool IsEmpty() const { return rest_.empty(); }

  std::uint8_t Byte() { return Number<std::uint8_t>(); }
  bool Flag() { return (Byte() & 1) != 0; }

  /// From one byte; `limit` is at most 256.
  std::uint32_t Below(std::uint32_t limit) { return Byte() % limit; }

  /// Little-endian.
  template <typename T>
  T Number() {
    T number{};
    const std::string_view bytes = Take(sizeof number);
    if (!bytes.empty()) std::memcpy(&number, bytes.data(), bytes.size());
    return number;
  }

  /// A byte that says how long it is, and the text.
  std::string_view Text() { return Take(Byte()); }

  std::string_view Rest() { return Take(rest_.size()); }

 private:
  std::string_view Take(std::size_t length) {
    const std::string_view taken = rest_.substr(0, length);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view rest_;
};

}  // namespace emstatus::fuzz
