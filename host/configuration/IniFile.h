#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace emstatus::host {

/// A line "key=value".
struct IniEntry {
  std::string key;
  std::string value;
  /// From 1; the pieces of a line that falls apart all have its number.
  std::size_t line = 0;
  /// What a semicolon has cut off, with the semicolon; empty without one.
  std::string comment;
  /// The semicolon stands directly behind other text.
  bool isCutWithin = false;
};

/// A line that is neither header nor entry, but holds more than a comment.
struct IniStray {
  std::string text;
  std::size_t line = 0;
};

struct IniSection {
  /// Up to the first "]"; empty when there is none.
  std::string name;
  /// The whole header, from "[" on, also with what stands behind it.
  std::string header;
  std::size_t line = 0;
  std::vector<IniEntry> entries;
  std::vector<IniStray> strays;
  /// By key, the first entry of each: the one that counts.
  std::map<std::string, std::size_t, std::less<>> firstOf;
};

/// A line of which the module sees pieces.
struct IniLongLine {
  std::size_t line = 0;
  /// Characters, with the line feed.
  std::size_t length = 0;
};

/// The text of an INI file, read as the module reads it, with the place of everything: of the sections of one
/// name the first counts, in it the first line of each key; a semicolon begins a comment wherever it stands;
/// a line of more than 1023 characters is several lines, and a zero byte ends the line it is in. [any thread]
class IniFile {
 public:
  static constexpr std::size_t kLongestLine = 1023;

  explicit IniFile(std::string_view text);

  /// The entry that counts, also one without a value; null when there is none.
  const IniEntry* Find(std::string_view section, std::string_view key) const;

  /// Nothing when it is missing or empty.
  std::optional<std::string> Value(std::string_view section, std::string_view key) const;

  /// The value in C notation (0x: hexadecimal, leading zero: octal), cut to 32 bits; 0 for a text that does
  /// not begin with a number, `otherwise` for a missing or empty one.
  std::int32_t Number(std::string_view section, std::string_view key, std::int32_t otherwise) const;

  /// What the names of a section may take together, each with a zero, for the module to see any of them.
  static constexpr std::size_t kLongestKeyList = 64509;

  /// In the order of the file, repeated ones repeated; an empty name ends the list, and a list that is too
  /// long is none.
  std::vector<std::string> Keys(std::string_view section) const;

  /// The section that counts; null when there is none.
  const IniSection* FindSection(std::string_view name) const;
  bool HasSection(std::string_view name) const { return FindSection(name) != nullptr; }

  /// All of them in order, also those that do not count. The first one is what stands before any header.
  const std::vector<IniSection>& Sections() const { return sections_; }

  const std::vector<IniLongLine>& LongLines() const { return longLines_; }

  /// Lines with a zero byte, which ends them for the module.
  const std::vector<std::size_t>& ZeroByteLines() const { return zeroByteLines_; }

 private:
  void TakePiece(std::string_view piece, std::size_t line);

  std::vector<IniSection> sections_{1};
  std::map<std::string, std::size_t, std::less<>> firstOf_;
  std::vector<IniLongLine> longLines_;
  std::vector<std::size_t> zeroByteLines_;
};

/// The bytes of the file at `path`. Throws a std::runtime_error that names it when it cannot be read or is no
/// file.
std::string ReadFileText(const std::string& path);

/// The file, read in the same way.
IniFile ReadIniFile(const std::string& path);

}  // namespace emstatus::host
