#include "host/configuration/DefinitionReader.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

namespace emstatus::host {
namespace {

Category CategoryOf(const std::string& word) {
  if (word == "Mandatory") {
    return Category::Mandatory;
  }
  if (word.empty() || word == "Optional") {
    return Category::Optional;
  }
  if (word == "Redundant") {
    return Category::Redundant;
  }
  return word == "Inactive" ? Category::Inactive : Category::Unknown;
}

void AddRedundancyEntry(MapEntry entry, Definition& definition) {
  if (entry.number) {
    definition.redundancyMap.try_emplace(*entry.number,
                                         Definition::Mapping{.entry = definition.redundancyEntries.size(),
                                                             .value = DecimalNumber(entry.target)});
  }
  definition.redundancyEntries.push_back(std::move(entry));
}

}  // namespace

Definition DefinitionReader::Read(const std::string& name) {
  Definition definition;
  definition.name = name;
  definition.section = "Component." + name;
  const std::string& section = definition.section;
  const auto text = [&](const char* key) { return ini_.Value(section, key).value_or(""); };
  if (const IniSection* found = ini_.FindSection(section)) {
    definition.line = found->line;
  }
  definition.displayNameRequest = Request(section, "DisplayNameRequest");
  if (!definition.displayNameRequest.IsDefined()) {
    definition.displayName = text("DisplayName");
  }
  const bool isNamed = definition.displayNameRequest.IsDefined() || !definition.displayName.empty();
  definition.instanceName = ini_.Value(section, "InstanceName").value_or(name);
  definition.category = CategoryOf(text("Category"));
  definition.source = text("Source");
  definition.objectName = text("ObjectName");
  definition.instanceBaseIndex = static_cast<std::uint8_t>(ini_.Number(section, "InstanceBaseIndex", 0));
  definition.handlesCabinets = ini_.Number(section, "HandleCabinets", 0) != 0;
  definition.nrInstances = std::min(ini_.Number(section, "NrInstances", 0), Configuration::kMostInstances);
  ReadRequests(definition);
  // The module looks no further at what has no name.
  const std::size_t before = entriesRead_;
  ReadMapEntries(definition);
  entriesRead_ = isNamed ? entriesRead_ : before;
  definition.isUsable = isNamed && !(definition.statusMap.empty() && definition.redundancyMap.empty());
  return definition;
}

ConfiguredRequest DefinitionReader::Request(const std::string& section, const char* key) const {
  ConfiguredRequest request;
  request.key = key;
  const IniEntry* entry = ini_.Find(section, key);
  if (entry == nullptr) {
    return request;
  }
  request.line = entry->line;
  if (entry->value.empty()) {
    request.problem = "no value";
    return request;
  }
  std::string text = WithVariables(entry->value, configuration_.variables);
  request.element = ReadRequestElement(text, request.problem);
  if (request.element && request.element->name == "CMD") {
    request.text = std::move(text);
  }
  return request;
}

void DefinitionReader::ReadRequests(Definition& definition) const {
  const auto read = [&](const char* key) { return Request(definition.section, key); };
  definition.statusRequest = read("StatusRequest");
  definition.cssRequest = read("CssRequest");
  definition.nrInstancesRequest = read("NrInstancesRequest");
  definition.redundancyRequest = read("RedundancyRequest");
  definition.designationRequest = read("DesignationRequest");
  definition.targetHostRequest = read("TargetHostRequest");
  definition.statusConfirm = read("StatusConfirm");
  if (definition.statusRequest.IsDefined()) {
    const std::string* context = definition.statusRequest.element->Attribute("Context");
    definition.context = context == nullptr ? "" : *context;
  }
}

void DefinitionReader::ReadMapEntries(Definition& definition) {
  std::set<std::string> seen;
  for (const std::string& key : ini_.Keys(definition.section)) {
    if (++entriesRead_ > Configuration::kMostMapEntries) {
      return;
    }
    const bool isStatus = key.starts_with("Status.");
    // Of a key that stands there twice, the module reads the first line twice.
    if ((!isStatus && !key.starts_with("Redundancy.")) || !seen.insert(key).second) {
      continue;
    }
    const IniEntry& entry = *ini_.Find(definition.section, key);
    MapEntry mapEntry = ReadMapEntry(key, entry.line, entry.value);
    if (isStatus) {
      AddStatusEntry(std::move(mapEntry), definition);
    } else {
      AddRedundancyEntry(std::move(mapEntry), definition);
    }
  }
}

void DefinitionReader::AddStatusEntry(MapEntry entry, Definition& definition) const {
  const auto status = configuration_.statusValues.find(entry.target);
  if (status != configuration_.statusValues.end()) {
    const Definition::Mapping mapping{.entry = definition.statusEntries.size(), .value = status->second};
    if (entry.number) {
      definition.statusMap.try_emplace(*entry.number, mapping);
    } else if (entry.IsForOthers()) {
      definition.otherStatus = mapping;
    }
  }
  definition.statusEntries.push_back(std::move(entry));
}

}  // namespace emstatus::host
