#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace emstatus::host {

/// Whether standard output takes colours: a terminal, and NO_COLOR is not set. [any thread]
bool StandardOutputTakesColours();

/// The text in the colour of a status, or as it is. [any thread]
std::string InColour(std::string_view text, std::uint32_t status, bool colours);

}  // namespace emstatus::host
