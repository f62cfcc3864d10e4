#include "host/configuration/MapEntry.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace emstatus::host {
namespace {

constexpr std::string_view kWordEnds = " \t;";

/// Takes the first word off `text`, and the separators behind it.
std::string TakeWord(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_of(kWordEnds), text.size());
  const std::string word(text.substr(0, end));
  text.remove_prefix(std::min(text.find_first_not_of(kWordEnds, end), text.size()));
  return word;
}

std::optional<std::int32_t> NumberAtStart(const std::string& word) {
  const std::size_t digit = word.starts_with('-') ? 1 : 0;
  const bool begins = digit < word.size() && word[digit] >= '0' && word[digit] <= '9';
  return begins ? std::optional(DecimalNumber(word)) : std::nullopt;
}

}  // namespace

MapEntry ReadMapEntry(std::string key, std::size_t line, std::string_view value) {
  MapEntry entry;
  entry.key = std::move(key);
  entry.line = line;
  entry.target = TakeWord(value);
  entry.raw = TakeWord(value);
  entry.rest = value;
  entry.number = NumberAtStart(entry.raw);
  return entry;
}

std::int32_t DecimalNumber(const std::string& text) {
  return static_cast<std::int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

}  // namespace emstatus::host
