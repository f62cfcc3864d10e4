#pragma once

#include <cstdint>

namespace emstatus::operation {

/// Operation codes that the module sends to the host by itself, and the events that it raises.
inline constexpr std::uint32_t kSignalCount = 0x1030;
inline constexpr std::uint32_t kSignalPurpose = 0x1031;
inline constexpr std::uint32_t kSetSignal = 0x1033;
inline constexpr std::uint32_t kRefreshRaidData = 0x21DF;
inline constexpr std::uint32_t kSystemStatusEvent = 0x230F;
inline constexpr std::uint32_t kInstanceStatusEvent = 0x2322;

}  // namespace emstatus::operation
