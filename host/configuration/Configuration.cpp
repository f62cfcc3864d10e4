#include "host/configuration/Configuration.h"

namespace emstatus::host {
namespace {

constexpr std::string_view kComponentPrefix = "Component.";
/// The module gives it no status, whatever the map says.
constexpr std::int32_t kRawUnknown = -1;

Rule PlaceOf(const Definition& definition, const MapEntry& entry) {
  return {Configuration::kFileName, entry.line, definition.section, entry.key};
}

}  // namespace

const Definition::Mapping* Definition::Find(std::int32_t rawState) const {
  if (rawState == kRawUnknown) {
    return nullptr;
  }
  const auto found = statusMap.find(rawState);
  if (found != statusMap.end()) {
    return &found->second;
  }
  return otherStatus ? &*otherStatus : nullptr;
}

const Definition* Configuration::FindComponent(std::string_view name) const {
  const auto found = components.find(name);
  return found == components.end() || !found->second.isUsable ? nullptr : &found->second;
}

const Definition* Configuration::FindSection(std::string_view section) const {
  if (!section.starts_with(kComponentPrefix)) {
    return nullptr;
  }
  return FindComponent(section.substr(kComponentPrefix.size()));
}

std::optional<Rule> Configuration::RuleOf(std::string_view section, std::int32_t rawState,
                                          std::uint32_t status) const {
  const Definition* definition = FindSection(section);
  if (definition == nullptr) {
    return std::nullopt;
  }
  const Definition::Mapping* mapping = definition->Find(rawState);
  if (mapping != nullptr && static_cast<std::uint32_t>(mapping->value) == status) {
    return PlaceOf(*definition, definition->statusEntries[mapping->entry]);
  }
  if (mapping == nullptr && status == 0) {
    return Rule{kFileName, definition->line, definition->section, {}};
  }
  if (definition->category == Category::Mandatory && status == queryFailStatus) {
    return queryFailRule;
  }
  return std::nullopt;
}

std::optional<Rule> Configuration::RedundancyRuleOf(std::string_view section,
                                                    std::int32_t rawRedundancy) const {
  const Definition* definition = FindSection(section);
  if (definition == nullptr) {
    return std::nullopt;
  }
  const auto found = definition->redundancyMap.find(rawRedundancy);
  if (found == definition->redundancyMap.end()) {
    return std::nullopt;
  }
  return PlaceOf(*definition, definition->redundancyEntries[found->second.entry]);
}

std::vector<std::string> SplitAtBlanks(std::string_view text) {
  std::vector<std::string> words;
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    if (!word.empty()) {
      words.emplace_back(word);
    }
    text.remove_prefix(word.size() + (word.size() < text.size() ? 1 : 0));
  }
  return words;
}

}  // namespace emstatus::host
