#include "config/ComponentReader.h"

#include <array>
#include <utility>
#include <vector>

#include "config/MapEntry.h"
#include "platform/CDebugClient.h"
#include "platform/ProfileFile.h"

namespace emstatus {
namespace {

constexpr std::uint32_t kMaxEntries = 262144;

constexpr std::array<std::pair<const char*, Category>, 4> kCategories = {{
    {"Mandatory", Category::Mandatory},
    {"Optional", Category::Optional},
    {"Redundant", Category::Redundant},
    {"Inactive", Category::Inactive},
}};

}  // namespace

bool ComponentReader::ReadComponentEntry(const std::string& componentName, ComponentDefinition& definition) {
  EM_TRACE(
      4, "\nEM_STATUS           :   read component request data for component entry \"%s\" from INI file...",
      componentName.c_str());
  section_ = "Component." + componentName;
  definition.name = componentName;
  if (!ReadDisplayName(definition)) return false;
  ReadTexts(definition);
  ReadNumbers(definition);
  ReadRequests(definition);
  ReadQueryContext(definition);
  definition.enabled = definition.category != Category::Inactive;
  if (!definition.enabled) EM_TRACE(3, "\nEM_STATUS           :   -> component category = inactive");
  ReadMapEntries(definition);
  if (definition.statusMap.empty() && definition.redundancyMap.empty()) {
    EM_TRACE(1, "\n\nEM_STATUS (ReadCfg) : ## ERROR! No valid mapping value(s) found for component \"%s\"!\n",
             componentName.c_str());
    return false;
  }
  return true;
}

std::string ComponentReader::Text(const char* key) {
  std::string text;
  profile_.GetString(text, section_.c_str(), key, "");
  return text;
}

bool ComponentReader::Request(const char* key, const char* label, RequestRecord& record) {
  return ReadRequestString(profile_, section_, key, label, variables_, record);
}

bool ComponentReader::ReadDisplayName(ComponentDefinition& definition) {
  if (Request("DisplayNameRequest", "display name request", definition.displayNameRequest)) return true;
  definition.displayName = Text("DisplayName");
  if (!definition.displayName.empty()) {
    EM_TRACE(1, "\nEM_STATUS           :   display name:        \"%s\"", definition.displayName.c_str());
    return true;
  }
  if (definition.name.ends_with(".alt")) {
    EM_TRACE(
        4,
        "\nEM_STATUS           :   -> component data not available (is OK when no alternative component definition)");
  } else {
    EM_TRACE(
        1,
        "\nEM_STATUS (ReadCfg) : ## ERROR! Neither fixed display name nor display name request string available for component \"%s\" - fix this!!",
        definition.name.c_str());
  }
  return false;
}

void ComponentReader::ReadTexts(ComponentDefinition& definition) {
  definition.instanceName = Text("InstanceName");
  if (definition.instanceName.empty()) definition.instanceName = definition.name;
  EM_TRACE(2, "\nEM_STATUS           :   instances base name: \"%s\"", definition.instanceName.c_str());
  ReadCategory(definition);
  definition.source = Text("Source");
  EM_TRACE(3, "\nEM_STATUS           :   source:               %s", definition.source.c_str());
  definition.objectName = Text("ObjectName");
  EM_TRACE(3, "\nEM_STATUS           :   object name:          %s", definition.objectName.c_str());
}

void ComponentReader::ReadCategory(ComponentDefinition& definition) {
  const std::string word = Text("Category");
  if (word.empty()) {
    definition.category = Category::Optional;
    return;
  }
  EM_TRACE(1, "\nEM_STATUS           :   category:             %s", word.c_str());
  for (const auto& [name, category] : kCategories) {
    if (word == name) {
      definition.category = category;
      return;
    }
  }
  definition.category = Category::Unknown;
  EM_TRACE(
      1,
      "\nEM_STATUS           : ## ERROR: Unknown component category \"%s\" in component \"%s\" - fix this!!",
      word.c_str(), definition.name.c_str());
}

void ComponentReader::ReadNumbers(ComponentDefinition& definition) {
  const char* section = section_.c_str();
  definition.instanceBaseIndex = static_cast<std::uint8_t>(profile_.GetInt(section, "InstanceBaseIndex", 0));
  if (definition.instanceBaseIndex != 0) {
    EM_TRACE(3, "\nEM_STATUS           :   base index:           %d", definition.instanceBaseIndex);
  }
  definition.handleCabinets = profile_.GetInt(section, "HandleCabinets", 0) != 0;
  if (definition.handleCabinets) EM_TRACE(3, "\nEM_STATUS           :   handle SE cabinets:   yes");
  definition.nrInstances = profile_.GetInt(section, "NrInstances", 0);
  if (definition.nrInstances != 0) {
    EM_TRACE(3, "\nEM_STATUS (ReadCfg) :   number of instances:  %d", definition.nrInstances);
  }
  if (definition.nrInstances > kMaxInstances) {
    EM_TRACE(1, "\nEM_STATUS (ReadCfg) : ## ERROR! NrInstances of component \"%s\" is above %d - %d used!",
             definition.name.c_str(), kMaxInstances, kMaxInstances);
    definition.nrInstances = kMaxInstances;
  }
}

void ComponentReader::ReadRequests(ComponentDefinition& definition) {
  Request("StatusRequest", "status query request", definition.statusRequest);
  Request("CssRequest", "CSS status request", definition.cssRequest);
  Request("NrInstancesRequest", "nrInstances request", definition.nrInstancesRequest);
  Request("RedundancyRequest", "redundancy request", definition.redundancyRequest);
  Request("DesignationRequest", "designation request", definition.designationRequest);
  Request("TargetHostRequest", "target host request", definition.targetHostRequest);
  Request("StatusConfirm", "failure confirm", definition.statusConfirm);
}

void ComponentReader::ReadQueryContext(ComponentDefinition& definition) {
  const std::string_view context = definition.statusRequest.command.Attribute("Context");
  definition.queryContext = QueryContext::None;
  if (context == "TRIQ") {
    definition.queryContext = QueryContext::Triq;
  } else if (context == "SNMP") {
    definition.queryContext = QueryContext::Snmp;
  } else if (context.empty()) {
    EM_TRACE(3, "\nEM_STATUS           :   no query context");
  } else {
    EM_TRACE(
        1, "\nEM_STATUS (ReadCfg) : ## ERROR! Unknown query context \"%s\" in component \"%s\" - fix this!!",
        std::string(context).c_str(), definition.name.c_str());
  }
}

void ComponentReader::ReadMapEntries(ComponentDefinition& definition) {
  EM_TRACE(4, "\nEM_STATUS           :   searching for mapping entries...");
  std::vector<std::string> keys;
  profile_.GetKeyNames(keys, section_.c_str());
  for (const std::string& key : keys) {
    if (++entries_ > kMaxEntries) {
      EM_TRACE(1,
               "\nEM_STATUS (ReadCfg) : ## ERROR! More than %u entries in all components - \"%s\" ignored!",
               kMaxEntries, key.c_str());
      return;
    }
    EM_TRACE(5, "\nEM_STATUS           :     checking entry \"%s\"...", key.c_str());
    if (key.starts_with("Status.")) {
      EM_TRACE(4, "\nEM_STATUS           :     found status map entry %s", key.c_str());
      AddStatusMapEntry(configuration_, key, Text(key.c_str()), definition);
    } else if (key.starts_with("Redundancy.")) {
      EM_TRACE(4, "\nEM_STATUS           :     found redundancy map entry %s", key.c_str());
      AddRedundancyMapEntry(key, Text(key.c_str()), definition);
    }
  }
}

}  // namespace emstatus
