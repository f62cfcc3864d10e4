#pragma once

#include <cstdint>

namespace emstatus {

/// The status of a node or component. Six values have a meaning; 6 to 255 can be configured but are inert.
using StatusValue = std::uint8_t;

inline constexpr StatusValue NoStatus = 0;
inline constexpr StatusValue OK = 1;
inline constexpr StatusValue Warning = 2;
inline constexpr StatusValue Error = 3;
/// The weakest real value: gives way to everything but NoStatus.
inline constexpr StatusValue StatusFour = 4;
/// Gives way to OK, Warning and Error.
inline constexpr StatusValue StatusFive = 5;

}  // namespace emstatus
