#include "host/view/Colours.h"

#include <unistd.h>

#include <cstdlib>

namespace emstatus::host {
namespace {

std::string_view CodeOf(std::uint32_t status) {
  switch (status) {
    case 1:
      return "\033[32m";
    case 2:
      return "\033[33m";
    case 3:
      return "\033[31m";
    default:
      return "\033[2m";
  }
}

}  // namespace

bool StandardOutputTakesColours() {
  const char* refusal = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) == 1 && (refusal == nullptr || *refusal == '\0');
}

std::string InColour(std::string_view text, std::uint32_t status, bool colours) {
  return colours ? std::string(CodeOf(status)) + std::string(text) + "\033[0m" : std::string(text);
}

}  // namespace emstatus::host
