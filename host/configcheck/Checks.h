#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/configcheck/Problem.h"
#include "host/configuration/Configuration.h"
#include "host/configuration/IniFile.h"

/// What can be wrong with an EM_STATUS.ini, one concern a function. [any thread]
namespace emstatus::host {

struct ConfigurationCheck {
  const IniFile& ini;
  const Configuration& configuration;
  Problems& problems;
};

/// What an INI file has: its sections and their keys.
struct KnownSection {
  /// A whole name, or one that ends in "." and stands for all that begin so.
  std::string name;
  std::vector<std::string> keys;
  /// Any key may stand in it.
  bool isFree = false;
  /// Keys that begin so are free behind it.
  std::vector<std::string> prefixes;
};

/// Lines that fall apart or say nothing, sections and keys twice, texts that a semicolon cuts, and names that
/// `known` does not have.
void CheckLines(const IniFile& ini, const std::vector<KnownSection>& known, Problems& problems);

/// A number that is none, or another one than it looks like, under `key`. `base` 0: C notation.
void CheckNumber(const IniFile& ini, const std::string& section, const std::string& key, int base,
                 Problems& problems);

/// The sections and keys of EM_STATUS.ini.
const std::vector<KnownSection>& ConfigurationSections();

/// [Info]: the module starts with nothing else.
void CheckIdentity(const ConfigurationCheck& check);
/// [Configuration]: numbers, and intervals that make no sense.
void CheckSettings(const ConfigurationCheck& check);
/// [StatusMapping].
void CheckStatusNames(const ConfigurationCheck& check);
/// [EnvironmentVariables].
void CheckVariables(const ConfigurationCheck& check);
/// [System] and the subsystems: what they list and what nothing lists.
void CheckLists(const ConfigurationCheck& check);
/// Components and names of instances that meet each other.
void CheckIds(const ConfigurationCheck& check);
/// One component or alternative that is listed: its keys, its requests, its map entries.
void CheckComponent(const ConfigurationCheck& check, const Definition& definition);
void CheckRequests(const ConfigurationCheck& check, const Definition& definition);
void CheckMaps(const ConfigurationCheck& check, const Definition& definition);

/// All of it, in the order of the lines. `file` is the name by which problems call the file.
std::vector<Problem> CheckConfiguration(const IniFile& ini, const Configuration& configuration,
                                        const std::string& file);

/// The same of the text of an EM_STATUS_simu.ini, for the configuration with the text `configurationText`.
std::vector<Problem> CheckSimulation(std::string_view text, const Configuration& configuration,
                                     std::string_view configurationText, const std::string& file);

}  // namespace emstatus::host
