#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace emstatus {

/// Whether `c` is white space in an INI file, whatever the locale says.
constexpr bool IsProfileBlank(char c) noexcept {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Whether a line that begins with "[" goes on with the name and "]"; anything may follow.
constexpr bool IsProfileHeaderOf(std::string_view line, std::string_view section) noexcept {
  line.remove_prefix(1);
  return line.size() > section.size() && line.starts_with(section) && line[section.size()] == ']';
}

/// Reads the lines of an INI file, in large pieces. A line has at most 1023 characters with its line feed;
/// what goes beyond that is the next line. [one thread at a time]
class ProfileLineReader {
 public:
  static constexpr std::size_t kLongestLine = 1023;

  /// Reads `file` from its current position. The descriptor stays the caller's.
  explicit ProfileLineReader(int file);

  /// Hands out the next line with its line feed, if it has one; valid until the next call. False at the end
  /// of the file; a read error is taken for the end.
  bool Next(std::string_view& line);

  /// The same for the next line that, behind white space, begins with `start`, which begins with "[". Far
  /// faster than looking at every line in between.
  bool NextHeader(std::string_view& line, std::string_view start = "[");

  /// Where in the file the line handed out last begins, and where it ends.
  std::uint64_t LineStart() const { return lineStart_; }
  std::uint64_t LineEnd() const { return offset_; }

 private:
  void Fill();
  void SkipToLineOf(const char* place);
  bool SkipToHeader(const char* bracket);
  void Advance(std::size_t length);

  const int file_;
  const std::unique_ptr<char[]> buffer_;
  const char* next_;
  const char* end_;
  bool atEnd_ = false;
  // Of next_ in the file, counted from where reading began.
  std::uint64_t offset_ = 0;
  std::uint64_t lineStart_ = 0;
};

}  // namespace emstatus
