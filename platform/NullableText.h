#pragma once

namespace emstatus {

/// A host's text, which may be null.
inline const char* OrEmpty(const char* text) noexcept {
  return text != nullptr ? text : "";
}

}  // namespace emstatus
