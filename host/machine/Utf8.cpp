#include "host/machine/Utf8.h"

#include <algorithm>
#include <cstdint>

namespace emstatus::host {
namespace {

bool IsContinuation(char byte) {
  return (std::uint8_t(byte) & 0xC0) == 0x80;
}

/// Bytes of the well-formed sequence at the start of `text`; 0 when there is none.
std::size_t SequenceLength(std::string_view text) {
  const auto first = std::uint8_t(text[0]);
  if (first < 0x80) {
    return 1;
  }
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length ||
      !std::ranges::all_of(text.substr(1, length - 1), IsContinuation)) {
    return 0;
  }
  const auto second = std::uint8_t(text[1]);
  const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool outside = (first == 0xED && second >= 0xA0) || (first == 0xF4 && second >= 0x90);
  return overlong || outside ? 0 : length;
}

}  // namespace

std::string CleanUtf8(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = SequenceLength(text);
    if (length == 0) {
      clean += "\xEF\xBF\xBD";
    } else {
      clean += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return clean;
}

std::string CleanLine(std::string_view text) {
  std::string line;
  for (const std::string clean = CleanUtf8(text); const char byte : clean) {
    const auto code = std::uint8_t(byte);
    const bool endsSecondControl = code < 0xA0 && !line.empty() && std::uint8_t(line.back()) == 0xC2;
    if (endsSecondControl) {
      line.back() = ' ';  // U+0080 to U+009F
    } else {
      line += code < 0x20 || code == 0x7F ? ' ' : byte;
    }
  }
  return line;
}

std::size_t ColumnsOf(std::string_view text) {
  return std::size_t(std::ranges::count_if(text, [](char byte) { return !IsContinuation(byte); }));
}

}  // namespace emstatus::host
