#pragma once

#include <cstddef>
#include <cstdint>

namespace emstatus {

/// What a module tells of itself. The host allocates and clears the record and sets `size`; the module
/// fills the fields below and leaves the reserved bytes as they are. Little-endian and packed: read and
/// write the fields by memcpy, not through references.
#pragma pack(push, 1)
struct ModuleInfo {
  /// Bytes that the host allocated; a module needs at least sizeof(ModuleInfo).
  std::uint32_t size;
  std::uint8_t reserved4[4];
  std::uint8_t capabilities8;
  std::uint8_t reserved9[12];
  std::uint8_t capabilities21;
  std::uint8_t reserved22[4];
  std::uint32_t number26;
  std::uint8_t reserved30[12];
  std::uint32_t number42;
  /// ASCII, padded with zeros.
  char name[96];
  std::uint16_t word142;
  std::uint8_t byte144;
  std::uint8_t byte145;
  /// ASCII, padded with zeros.
  char description[96];
  std::uint16_t word242;
  std::uint8_t byte244;
  std::uint8_t byte245;
};
#pragma pack(pop)

static_assert(sizeof(ModuleInfo) == 246);
static_assert(offsetof(ModuleInfo, capabilities8) == 8 && offsetof(ModuleInfo, capabilities21) == 21);
static_assert(offsetof(ModuleInfo, number26) == 26 && offsetof(ModuleInfo, number42) == 42);
static_assert(offsetof(ModuleInfo, name) == 46 && offsetof(ModuleInfo, word142) == 142);
static_assert(offsetof(ModuleInfo, byte144) == 144 && offsetof(ModuleInfo, byte145) == 145);
static_assert(offsetof(ModuleInfo, description) == 146 && offsetof(ModuleInfo, word242) == 242);
static_assert(offsetof(ModuleInfo, byte244) == 244 && offsetof(ModuleInfo, byte245) == 245);

}  // namespace emstatus
