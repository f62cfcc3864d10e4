#include "config/ConfigurationReader.h"

#include <cstdlib>
#include <utility>
#include <vector>

#include "config/ComponentReader.h"
#include "config/Placeholders.h"
#include "config/SplitText.h"
#include "platform/CDebugClient.h"
#include "platform/ProfileFile.h"

namespace emstatus {
namespace {

constexpr const char* kConfigurationFile = "EM_STATUS.ini";
constexpr int kLayoutVersion = 4;

/// Each costs a dozen scans of the file.
constexpr std::uint32_t kMaxComponents = 16384;

std::string TextOf(ProfileFile& profile, const std::string& section, const std::string& key,
                   const char* fallback = "") {
  std::string text;
  profile.GetString(text, section.c_str(), key.c_str(), fallback);
  return text;
}

}  // namespace

bool ConfigurationReader::ReadConfigurationFile(StatusConfiguration& configuration) {
  EM_TRACE(1, "\n\nEM_STATUS (ReadCfg) : Read module configuration from INI file");
  variables_.clear();
  ProfileFile profile;
  int layoutVersion = 0;
  std::string path;
  if (findFile_(path) && !OpenAndIdentify(path, profile, layoutVersion)) {
    profile.Close();
    return false;
  }
  ReadSettings(profile, layoutVersion, configuration);
  ReadStatusNames(profile, configuration);
  ReadVariables(profile);
  ReadSystem(profile, configuration);
  if (isShutdown_()) {
    EM_TRACE(3, "\nEM_STATUS (ReadCfg) : ReadConfigurationFile() - Module shutdown; function aborted");
  }
  profile.Close();
  variables_.clear();
  return true;
}

bool ConfigurationReader::OpenAndIdentify(const std::string& path, ProfileFile& profile, int& layoutVersion) {
  EM_TRACE(3, "\nEM_STATUS (ReadCfg) : Open configuration INI file");
  if (!profile.Open(path.c_str(), 1)) {
    EM_TRACE(
        1,
        "\nEM_STATUS           : ## FATAL ERROR! Could not open config file \"%s\" (file not existing or not readable)!\n",
        path.c_str());
    return false;
  }
  layoutVersion = profile.GetInt("Info", "LayoutVersion", 0);
  const std::string fileName = TextOf(profile, "Info", "Filename");
  if (fileName != kConfigurationFile) {
    EM_TRACE(
        1,
        "\nEM_STATUS (ReadCfg) : ## FATAL ERROR! Illegal configuration file name found; expected \"%s\", found \"%s\".\n",
        kConfigurationFile, fileName.c_str());
    return false;
  }
  if (layoutVersion != kLayoutVersion) {
    EM_TRACE(
        1,
        "\nEM_STATUS (ReadCfg) : ## FATAL ERROR! Old configuration file layout found; expected V%d, found V%d.\n",
        kLayoutVersion, layoutVersion);
    return false;
  }
  return true;
}

void ConfigurationReader::ReadSettings(ProfileFile& profile, int layoutVersion,
                                       StatusConfiguration& configuration) {
  EM_TRACE(2, "\nEM_STATUS (ReadCfg) : Reading global settings...");
  const auto read = [&profile](const char* key, int fallback) {
    return profile.GetInt("Configuration", key, fallback);
  };
  StatusConfiguration& c = configuration;
  c.initialPollingDelay = read("InitialPollingDelaySeconds", c.initialPollingDelay);
  c.pollingRate = read("PollingRateSeconds", c.pollingRate);
  c.advancedPollingCycles = read("AdvancedPollingCycles", c.advancedPollingCycles);
  c.advancedPollingRate = read("AdvancedPollingRateSeconds", c.advancedPollingRate);
  c.queryFailStatus = static_cast<StatusValue>(read("StatusValueQueryFail", c.queryFailStatus));
  c.undefinedMappingStatus =
      static_cast<StatusValue>(read("StatusValueUndefinedMapping", c.undefinedMappingStatus));

  EM_TRACE(1, "\n\nEM_STATUS (ReadCfg) : INI file layout version:   %d", layoutVersion);
  EM_TRACE(1, "\nEM_STATUS           :   initial query delay:     %d seconds", c.initialPollingDelay);
  EM_TRACE(1, "\nEM_STATUS           :   status polling rate:     %d seconds", c.pollingRate);
  EM_TRACE(1, "\nEM_STATUS           :   advanced polling rate:   %d seconds", c.advancedPollingRate);
  EM_TRACE(1, "\nEM_STATUS           :   advanced polling cycles: %d", c.advancedPollingCycles);
  EM_TRACE(1, "\nEM_STATUS           :   query fail status value: %d", c.queryFailStatus);
  EM_TRACE(1, "\n\nEM_STATUS (QUERY)   : ## SNMP not used in this product - all SNMP query requests ignored");
}

void ConfigurationReader::ReadStatusNames(ProfileFile& profile, StatusConfiguration& configuration) {
  EM_TRACE(2, "\n\nEM_STATUS (ReadCfg) : Reading status mapping names and values...");
  std::vector<std::string> names;
  profile.GetKeyNames(names, "StatusMapping");
  for (const std::string& name : names) {
    const std::string text = TextOf(profile, "StatusMapping", name, "0");
    const long value = std::strtol(text.c_str(), nullptr, 10);
    if (value > 255) {
      EM_TRACE(1, "\n\nEM_STATUS (ReadCfg) : ## ERROR: StatusMapping value > 256 (%d) - ignored!\n",
               static_cast<int>(value));
      continue;
    }
    EM_TRACE(3, "\nEM_STATUS           :   %s = %s", name.c_str(), text.c_str());
    const auto status = static_cast<StatusValue>(value);
    configuration.statusNames.insert_or_assign(status, name);
    configuration.statusValues.insert_or_assign(name, status);
  }
  if (configuration.statusNames.empty()) {
    EM_TRACE(1, "\n\nEM_STATUS (ReadCfg) : ## ERROR: StatusMapping section not found in INI file!\n");
  }
}

void ConfigurationReader::ReadVariables(ProfileFile& profile) {
  EM_TRACE(2, "\n\nEM_STATUS (ReadCfg) : Reading global environment variable names...");
  const std::string common = "EnvironmentVariables";
  EM_TRACE(3, "\nEM_STATUS (ReadCfg) :   read from common environment section [%s]", common.c_str());
  ReadVariableSection(profile, common);
  const std::string own = common + ".Linux";
  EM_TRACE(3, "\nEM_STATUS (ReadCfg) :   read from OS specific environment section [%s]", own.c_str());
  ReadVariableSection(profile, own);
}

void ConfigurationReader::ReadVariableSection(ProfileFile& profile, const std::string& section) {
  std::vector<std::string> names;
  profile.GetKeyNames(names, section.c_str());
  for (const std::string& name : names) {
    const std::string text = TextOf(profile, section, name);
    EM_TRACE(3, "\nEM_STATUS           :     variable \"%s\" = \"%s\"", name.c_str(), text.c_str());
    EM_TRACE(4, "\nEM_STATUS           :     substitute process environment variable values...");
    std::string value = ExpandEnvironment(text);
    EM_TRACE(2, "\nEM_STATUS           :   -> add environment variable [%s] = \"%s\"", name.c_str(),
             value.c_str());
    variables_.insert_or_assign(name, std::move(value));
  }
}

void ConfigurationReader::ReadSystem(ProfileFile& profile, StatusConfiguration& configuration) {
  configuration.systemDesignation = TextOf(profile, "System", "DisplayName");
  const std::string subsystems = TextOf(profile, "System", "Subsystems");
  EM_TRACE(2, "\n\nEM_STATUS           : System node designation: \"%s\"",
           configuration.systemDesignation.c_str());
  EM_TRACE(2, "\n\nEM_STATUS           : Subsystems:              %s", subsystems.c_str());
  EM_TRACE(2, "\n\nEM_STATUS (ReadCfg) : Reading subsystems and their associated components...");
  ComponentReader reader(profile, configuration, variables_);
  componentsListed_ = 0;
  for (const std::string& name : SplitText(subsystems, ' ')) {
    ReadSubsystem(profile, reader, name, configuration);
  }
}

void ConfigurationReader::ReadSubsystem(ProfileFile& profile, ComponentReader& reader,
                                        const std::string& name, StatusConfiguration& configuration) {
  EM_TRACE(2, "\nEM_STATUS (ReadCfg) : found subsystem \"%s\"", name.c_str());
  const std::string section = "Subsystem." + name;
  SubsystemDefinition subsystem{name, TextOf(profile, section, "DisplayName"), {}};
  const std::string components = TextOf(profile, section, "Components");
  if (subsystem.displayName.empty()) {
    EM_TRACE(
        1,
        "\nEM_STATUS           : ## FATAL ERROR! Display name not available for subsystem \"%s\" - fix ths!!\n",
        name.c_str());
    return;
  }
  if (components.empty()) return;
  EM_TRACE(2, "\nEM_STATUS           :   display name:   \"%s\"", subsystem.displayName.c_str());
  for (const std::string& component : SplitText(components, ' ')) {
    if (++componentsListed_ > kMaxComponents) {
      EM_TRACE(1, "\nEM_STATUS (ReadCfg) : ## ERROR! More than %u components listed - \"%s\" ignored!",
               kMaxComponents, component.c_str());
      break;
    }
    ReadComponent(reader, component, configuration, subsystem);
  }
  configuration.subsystems.push_back(std::move(subsystem));
}

void ConfigurationReader::ReadComponent(ComponentReader& reader, const std::string& name,
                                        StatusConfiguration& configuration, SubsystemDefinition& subsystem) {
  EM_TRACE(2, "\nEM_STATUS           : read component information for component \"%s\"", name.c_str());
  ComponentDefinition primary;
  bool used = reader.ReadComponentEntry(name, primary);
  if (!used) {
    EM_TRACE(4, "\nEM_STATUS           : Component \"%s\" does not have request data or is ignored!!\n",
             name.c_str());
  } else {
    EM_TRACE(4, "\nEM_STATUS (ReadCfg) :   -> primary component request definition is available");
    if (primary.queryContext == QueryContext::Snmp) {
      used = false;
      EM_TRACE(
          2,
          "\nEM_STATUS (ReadCfg) :   -> query context is SNMP in non-SNMP environment - component not used!");
    }
  }

  ComponentDefinition alternative;
  if (reader.ReadComponentEntry(name + ".alt", alternative)) {
    EM_TRACE(2, "\nEM_STATUS (ReadCfg) :   -> alternative component request definition \"%s\" available",
             alternative.name.c_str());
    primary.hasAlternative = true;
    configuration.components.insert_or_assign(alternative.name, std::move(alternative));
  }
  if (used) {
    subsystem.componentNames.push_back(name);
    configuration.components.insert_or_assign(name, std::move(primary));
  }
}

}  // namespace emstatus
