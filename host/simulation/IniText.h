#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace emstatus::host {

/// The text of an INI file, read as the module reads it: of each section the first of its name counts, in it
/// the first line of each key; a semicolon begins a comment wherever it stands; a line of more than 1023
/// characters is several lines. [any thread]
class IniText {
 public:
  explicit IniText(std::string_view text);

  /// Nothing when it is missing or empty.
  std::optional<std::string> Value(std::string_view section, std::string_view key) const;

  /// The value in C notation (0x: hexadecimal, leading zero: octal), cut to 32 bits; 0 for a text that does
  /// not begin with a number, `otherwise` for a missing or empty one.
  std::int32_t Number(std::string_view section, std::string_view key, std::int32_t otherwise) const;

  /// In the order of the file, repeated ones repeated; an empty name ends the list.
  std::vector<std::string> Keys(std::string_view section) const;

  bool HasSection(std::string_view section) const { return Find(section) != nullptr; }

 private:
  struct Section {
    std::string name;
    std::vector<std::pair<std::string, std::string>> entries;
  };

  void TakeLine(std::string_view line);
  const Section* Find(std::string_view name) const;

  /// The first belongs to no section. Later sections of a known name are there, but never found.
  std::vector<Section> sections_{1};
};

}  // namespace emstatus::host
