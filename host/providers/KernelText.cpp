#include "host/providers/KernelText.h"

#include <charconv>
#include <cmath>

namespace emstatus::host {
namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n\v\f";

template <typename Number>
std::optional<Number> ParseWhole(std::string_view digits, int base) {
  Number number{};
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
  if (error != std::errc{} || end != digits.data() + digits.size()) {
    return std::nullopt;
  }
  return number;
}

bool IsOctal(char character) {
  return character >= '0' && character <= '7';
}

}  // namespace

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

std::optional<std::int64_t> ParseInteger(std::string_view text) {
  std::string_view digits = Trimmed(text);
  if (digits.starts_with('+')) {
    digits.remove_prefix(1);
    if (digits.starts_with('-')) {
      return std::nullopt;
    }
  }
  return ParseWhole<std::int64_t>(digits, 10);
}

std::optional<std::uint64_t> ParseUnsigned(std::string_view text) {
  const std::string_view digits = Trimmed(text);
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    return ParseWhole<std::uint64_t>(digits.substr(2), 16);
  }
  return ParseWhole<std::uint64_t>(digits, 10);
}

std::optional<double> ParseDecimal(std::string_view text) {
  const std::string_view digits = Trimmed(text);
  double number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed);
  if (error != std::errc{} || end != digits.data() + digits.size() || !std::isfinite(number)) {
    return std::nullopt;
  }
  return number;
}

std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

std::vector<std::string_view> Words(std::string_view line, char alsoParts) {
  const auto parts = [alsoParts](char character) {
    return kWhiteSpace.find(character) != std::string_view::npos || character == alsoParts;
  };
  std::vector<std::string_view> words;
  std::size_t begin = 0;
  for (std::size_t at = 0; at <= line.size(); ++at) {
    if (at == line.size() || parts(line[at])) {
      if (at > begin) {
        words.push_back(line.substr(begin, at - begin));
      }
      begin = at + 1;
    }
  }
  return words;
}

std::optional<std::vector<std::uint32_t>> ParseRangeList(std::string_view text, std::size_t limit) {
  std::vector<std::uint32_t> numbers;
  for (const std::string_view range : Words(text, ',')) {
    const std::size_t dash = range.find('-');
    const auto first = ParseWhole<std::uint32_t>(range.substr(0, dash), 10);
    const auto last =
        dash == std::string_view::npos ? first : ParseWhole<std::uint32_t>(range.substr(dash + 1), 10);
    if (!first || !last || *last < *first || *last == UINT32_MAX ||
        *last - *first >= limit - numbers.size()) {
      return std::nullopt;
    }
    for (std::uint32_t number = *first; number <= *last; ++number) {
      numbers.push_back(number);
    }
  }
  return numbers;
}

std::string WithoutOctalEscapes(std::string_view field) {
  std::string text;
  text.reserve(field.size());
  for (std::size_t at = 0; at < field.size(); ++at) {
    if (field[at] == '\\' && at + 3 < field.size() && IsOctal(field[at + 1]) && IsOctal(field[at + 2]) &&
        IsOctal(field[at + 3])) {
      text.push_back(
          static_cast<char>((field[at + 1] - '0') * 64 + (field[at + 2] - '0') * 8 + (field[at + 3] - '0')));
      at += 3;
    } else {
      text.push_back(field[at]);
    }
  }
  return text;
}

std::string_view BaseName(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::optional<std::uint32_t> NumberAfter(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix)) {
    return std::nullopt;
  }
  return ParseWhole<std::uint32_t>(name.substr(prefix.size()), 10);
}

}  // namespace emstatus::host
