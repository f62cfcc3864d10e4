#include "host/configuration/Placeholders.h"

#include <cstdlib>

namespace emstatus::host {
namespace {

constexpr std::string_view kNameLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
constexpr std::size_t kLongestExpanded = 259;

}  // namespace

std::optional<std::string_view> PlaceholderAt(std::string_view text, std::size_t at) {
  const std::size_t end = text.find_first_not_of(kNameLetters, at + 1);
  if (end == std::string_view::npos || text[end] != '%') {
    return std::nullopt;
  }
  return text.substr(at + 1, end - at - 1);
}

std::string WithEnvironment(const std::string& text) {
  std::string expanded;
  bool replaced = false;
  std::size_t at = 0;
  while (at < text.size()) {
    const auto name = text[at] == '%' ? PlaceholderAt(text, at) : std::nullopt;
    if (!name) {
      expanded += text[at++];
      continue;
    }
    // Beyond the cut, a placeholder is not looked at.
    replaced = replaced || expanded.size() < kLongestExpanded;
    const char* value = std::getenv(std::string(*name).c_str());
    expanded += value == nullptr ? "" : value;
    at += name->size() + 2;
  }
  return replaced ? expanded.substr(0, kLongestExpanded) : text;
}

std::string WithVariables(std::string_view text, const ConfigurationVariables& variables) {
  std::string expanded;
  std::size_t at = 0;
  while (at < text.size()) {
    const auto name = text[at] == '%' ? PlaceholderAt(text, at) : std::nullopt;
    if (!name) {
      expanded += text[at++];
      continue;
    }
    const auto variable = variables.find(*name);
    expanded += name->empty() ? "%" : variable == variables.end() ? "" : variable->second;
    at += name->size() + 2;
  }
  return expanded;
}

}  // namespace emstatus::host
