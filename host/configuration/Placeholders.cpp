#include "host/configuration/Placeholders.h"

#include <cstdlib>

namespace emstatus::host {
namespace {

constexpr std::string_view kNameLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
constexpr std::size_t kLongestExpanded = 259;

/// The text with `valueOf(name, text so far)` in the place of each placeholder.
template <typename ValueOf>
std::string Replaced(std::string_view text, ValueOf valueOf) {
  std::string expanded;
  std::size_t at = 0;
  while (at < text.size()) {
    const auto name = text[at] == '%' ? PlaceholderAt(text, at) : std::nullopt;
    if (name) {
      expanded += valueOf(*name, expanded);
      at += name->size() + 2;
    } else {
      expanded += text[at++];
    }
  }
  return expanded;
}

}  // namespace

std::optional<std::string_view> PlaceholderAt(std::string_view text, std::size_t at) {
  const std::size_t end = text.find_first_not_of(kNameLetters, at + 1);
  if (end == std::string_view::npos || text[end] != '%') {
    return std::nullopt;
  }
  return text.substr(at + 1, end - at - 1);
}

std::string WithEnvironment(const std::string& text) {
  bool replaced = false;
  const std::string expanded = Replaced(text, [&](std::string_view name, const std::string& before) {
    // Beyond the cut, a placeholder is not looked at.
    replaced = replaced || before.size() < kLongestExpanded;
    const char* value = std::getenv(std::string(name).c_str());
    return std::string(value == nullptr ? "" : value);
  });
  return replaced ? expanded.substr(0, kLongestExpanded) : text;
}

std::string WithVariables(std::string_view text, const ConfigurationVariables& variables) {
  return Replaced(text, [&](std::string_view name, const std::string&) {
    const auto variable = variables.find(name);
    return name.empty() ? "%" : variable == variables.end() ? std::string() : variable->second;
  });
}

}  // namespace emstatus::host
