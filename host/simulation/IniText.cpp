#include "host/simulation/IniText.h"

#include <algorithm>
#include <cstdlib>

namespace emstatus::host {
namespace {

constexpr std::string_view kSpace = " \t\n\v\f\r";
constexpr std::size_t kLongestLine = 1023;
constexpr std::size_t kLongestNumber = 31;

std::string_view WithoutLeadingSpace(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(kSpace), text.size()));
}

std::string_view WithoutTrailingSpace(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kSpace) + 1);
}

}  // namespace

IniText::IniText(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length =
        std::min({text.size(), kLongestLine, std::min(text.find('\n'), text.size() - 1) + 1});
    const std::string_view line = text.substr(0, length);
    // The module reads C strings.
    TakeLine(line.substr(0, line.find('\0')));
    text.remove_prefix(length);
  }
}

void IniText::TakeLine(std::string_view line) {
  const std::string_view content = WithoutTrailingSpace(WithoutLeadingSpace(line.substr(0, line.find(';'))));
  if (content.starts_with('[')) {
    const std::size_t end = content.find(']');
    const bool named = end != std::string_view::npos;
    sections_.push_back({std::string(named ? content.substr(1, end - 1) : std::string_view{}), {}});
    return;
  }
  const std::size_t equals = content.find('=');
  if (equals != std::string_view::npos) {
    sections_.back().entries.emplace_back(WithoutTrailingSpace(content.substr(0, equals)),
                                          WithoutLeadingSpace(content.substr(equals + 1)));
  }
}

const IniText::Section* IniText::Find(std::string_view name) const {
  const auto found = std::find_if(sections_.begin() + 1, sections_.end(),
                                  [&](const Section& section) { return section.name == name; });
  return found == sections_.end() ? nullptr : &*found;
}

std::optional<std::string> IniText::Value(std::string_view section, std::string_view key) const {
  const Section* entries = Find(section);
  if (entries == nullptr) {
    return std::nullopt;
  }
  const auto found = std::ranges::find(entries->entries, key, &std::pair<std::string, std::string>::first);
  return found == entries->entries.end() || found->second.empty() ? std::nullopt
                                                                  : std::optional(found->second);
}

std::int32_t IniText::Number(std::string_view section, std::string_view key, std::int32_t otherwise) const {
  const auto value = Value(section, key);
  return value ? static_cast<std::int32_t>(std::strtoul(value->substr(0, kLongestNumber).c_str(), nullptr, 0))
               : otherwise;
}

std::vector<std::string> IniText::Keys(std::string_view section) const {
  std::vector<std::string> keys;
  if (const Section* entries = Find(section)) {
    for (const auto& [key, value] : entries->entries) {
      if (key.empty()) {
        break;
      }
      keys.push_back(key);
    }
  }
  return keys;
}

}  // namespace emstatus::host
