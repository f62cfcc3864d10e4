#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace emstatus::host {

/// The words for status values: those of the configuration's [StatusMapping], and plain ones for the rest.
/// [any thread]
class StatusWords {
 public:
  StatusWords() = default;
  explicit StatusWords(std::map<std::uint32_t, std::string> names) : names_(std::move(names)) {}
  /// Takes the names from the text of an EM_STATUS.ini.
  explicit StatusWords(std::string_view configurationText);

  /// Reads the file; without it, the plain words.
  static StatusWords FromFile(const std::string& path);

  std::string Of(std::uint32_t status) const;

 private:
  std::map<std::uint32_t, std::string> names_;
};

/// Exit code of a check: 0 all good, 1 warning, 2 error, 3 no status.
int ExitCodeOf(std::uint32_t systemStatus);

}  // namespace emstatus::host
