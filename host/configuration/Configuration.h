#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/configuration/Definition.h"
#include "host/configuration/IniFile.h"
#include "host/configuration/Placeholders.h"
#include "host/configuration/Rule.h"

namespace emstatus::host {

struct ConfiguredSubsystem {
  std::string name;
  std::string section;
  std::string displayName;
  /// The components that the module asks, in order.
  std::vector<std::string> components;
};

/// What an EM_STATUS.ini says, read as the module reads it but with the place of everything. [any thread]
struct Configuration {
  static constexpr const char* kFileName = "EM_STATUS.ini";
  static constexpr std::int32_t kLayoutVersion = 4;
  /// What one configuration may ask for; the module passes over what goes beyond it.
  static constexpr std::size_t kMostComponents = 16384;
  static constexpr std::size_t kMostMapEntries = 262144;
  static constexpr std::int32_t kMostInstances = 65536;
  static constexpr long kLargestStatus = 255;

  /// It names itself as it must; the module does not start with another one.
  bool isAccepted = false;

  /// Seconds.
  std::int32_t initialPollingDelay = 60;
  std::int32_t pollingRate = 60;
  std::int32_t advancedPollingRate = 15;
  std::int32_t advancedPollingCycles = 30;
  std::uint8_t queryFailStatus = 0;
  std::uint8_t undefinedMappingStatus = 0;

  std::map<std::uint8_t, std::string> statusNames;
  std::map<std::string, std::uint8_t, std::less<>> statusValues;
  ConfigurationVariables variables;
  std::string systemDesignation;
  /// Those that the module uses, in order.
  std::vector<ConfiguredSubsystem> subsystems;
  /// Every component that is listed and has a section, and its alternative, by name; also those that the
  /// module cannot use.
  std::map<std::string, Definition, std::less<>> components;

  /// The definition of that name that the module uses, null when there is none.
  const Definition* FindComponent(std::string_view name) const;
  /// The same by its section, "Component.NAME".
  const Definition* FindSection(std::string_view section) const;

  /// What made `status` of a raw state that a component's host answered: the map entry, the section itself
  /// (an empty key) for NoStatus of a state that nothing covers, or the line of the status for a mandatory
  /// component that did not answer. Nothing when the section is not known, or when it is not the
  /// configuration that gives this status to this state (a simulation, a fault that redundancy covers).
  std::optional<Rule> RuleOf(std::string_view section, std::int32_t rawState, std::uint32_t status) const;

  /// The map entry of a raw redundancy; nothing when there is none.
  std::optional<Rule> RedundancyRuleOf(std::string_view section, std::int32_t rawRedundancy) const;

  /// Where StatusValueQueryFail is said.
  Rule queryFailRule;
};

/// Reads all that the module would, whether it accepts the file or not.
Configuration ReadConfiguration(const IniFile& ini);

/// The parts of `text` between blanks, of which several count as one; other white space is part of a name.
std::vector<std::string> SplitAtBlanks(std::string_view text);

}  // namespace emstatus::host
