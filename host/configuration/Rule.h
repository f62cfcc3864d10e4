#pragma once

#include <cstddef>
#include <string>

namespace emstatus::host {

/// A place in a configuration that decided something, or that something is wrong with.
struct Rule {
  /// Without its folder.
  std::string file;
  /// From 1; 0: the file does not say it, so that the module's own default holds.
  std::size_t line = 0;
  std::string section;
  /// Empty: the section as a whole.
  std::string key;

  friend bool operator==(const Rule&, const Rule&) = default;
};

}  // namespace emstatus::host
