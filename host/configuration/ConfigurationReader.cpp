#include <cstdlib>
#include <type_traits>
#include <utility>

#include "host/configuration/Configuration.h"
#include "host/configuration/DefinitionReader.h"
#include "host/configuration/MapEntry.h"

namespace emstatus::host {
namespace {

void ReadSettings(const IniFile& ini, Configuration& configuration) {
  const auto read = [&ini](const char* key, auto& setting) {
    using Setting = std::remove_reference_t<decltype(setting)>;
    setting = static_cast<Setting>(ini.Number("Configuration", key, setting));
  };
  read("InitialPollingDelaySeconds", configuration.initialPollingDelay);
  read("PollingRateSeconds", configuration.pollingRate);
  read("AdvancedPollingCycles", configuration.advancedPollingCycles);
  read("AdvancedPollingRateSeconds", configuration.advancedPollingRate);
  read("StatusValueQueryFail", configuration.queryFailStatus);
  read("StatusValueUndefinedMapping", configuration.undefinedMappingStatus);
  const IniEntry* queryFail = ini.Find("Configuration", "StatusValueQueryFail");
  configuration.queryFailRule = {Configuration::kFileName, queryFail == nullptr ? 0 : queryFail->line,
                                 "Configuration", "StatusValueQueryFail"};
}

void ReadStatusNames(const IniFile& ini, Configuration& configuration) {
  for (const std::string& name : ini.Keys("StatusMapping")) {
    const long value = std::strtol(ini.Value("StatusMapping", name).value_or("0").c_str(), nullptr, 10);
    if (value > Configuration::kLargestStatus) {
      continue;
    }
    const auto status = static_cast<std::uint8_t>(value);
    configuration.statusNames.insert_or_assign(status, name);
    configuration.statusValues.insert_or_assign(name, status);
  }
}

void ReadVariables(const IniFile& ini, ConfigurationVariables& variables) {
  for (const char* section : {"EnvironmentVariables", "EnvironmentVariables.Linux"}) {
    for (const std::string& name : ini.Keys(section)) {
      variables.insert_or_assign(name, WithEnvironment(ini.Value(section, name).value_or("")));
    }
  }
}

/// True when the subsystem gets it.
bool ReadComponent(DefinitionReader& reader, const std::string& name, Configuration& configuration) {
  Definition primary = reader.Read(name);
  if (primary.context == "SNMP") {
    primary.isUsable = false;
  }
  Definition alternative = reader.Read(name + ".alt");
  primary.hasAlternative = alternative.isUsable;
  const bool isUsed = primary.isUsable;
  for (Definition* definition : {&alternative, &primary}) {
    const bool isKnown = configuration.components.contains(definition->name);
    if (definition->line != 0 && (definition->isUsable || !isKnown)) {
      configuration.components.insert_or_assign(definition->name, std::move(*definition));
    }
  }
  return isUsed;
}

void ReadSubsystem(const IniFile& ini, DefinitionReader& reader, const std::string& name,
                   std::size_t& componentsListed, Configuration& configuration) {
  const std::string section = "Subsystem." + name;
  ConfiguredSubsystem subsystem{name, section, ini.Value(section, "DisplayName").value_or(""), {}};
  const std::string components = ini.Value(section, "Components").value_or("");
  if (subsystem.displayName.empty() || components.empty()) {
    return;
  }
  for (const std::string& component : SplitAtBlanks(components)) {
    if (++componentsListed > Configuration::kMostComponents) {
      break;
    }
    if (ReadComponent(reader, component, configuration)) {
      subsystem.components.push_back(component);
    }
  }
  configuration.subsystems.push_back(std::move(subsystem));
}

}  // namespace

Configuration ReadConfiguration(const IniFile& ini) {
  Configuration configuration;
  configuration.isAccepted = ini.Value("Info", "Filename") == Configuration::kFileName &&
                             ini.Number("Info", "LayoutVersion", 0) == Configuration::kLayoutVersion;
  ReadSettings(ini, configuration);
  ReadStatusNames(ini, configuration);
  ReadVariables(ini, configuration.variables);
  configuration.systemDesignation = ini.Value("System", "DisplayName").value_or("");
  DefinitionReader reader(ini, configuration);
  std::size_t componentsListed = 0;
  for (const std::string& name : SplitAtBlanks(ini.Value("System", "Subsystems").value_or(""))) {
    ReadSubsystem(ini, reader, name, componentsListed, configuration);
  }
  return configuration;
}

}  // namespace emstatus::host
