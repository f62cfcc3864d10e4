#pragma once

#include <cstdint>
#include <string>

namespace emstatus {

/// Something wrong in a document.
struct MarkupError {
  /// From 1.
  std::uint32_t line = 0;
  /// From 1, in characters.
  std::uint32_t column = 0;
  /// What was expected and what stands there.
  std::string message;
};

}  // namespace emstatus
