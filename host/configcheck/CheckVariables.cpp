#include <cstdlib>
#include <string_view>

#include "host/configcheck/Checks.h"
#include "host/configuration/Placeholders.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kExpandedLength = 259;

void CheckVariable(const ConfigurationCheck& check, const std::string& section, const IniEntry& entry) {
  const Problems::Place place{entry.line, section, entry.key};
  if (PlaceholderAt("%" + entry.key + "%", 0) != entry.key) {
    check.problems.Error(place, "no request can use a name with other characters than letters, digits and _",
                         "write another name");
  }
  bool isReplaced = false;
  for (std::size_t at = entry.value.find('%'); at < entry.value.size(); at = entry.value.find('%', at + 1)) {
    const auto name = PlaceholderAt(entry.value, at);
    if (!name) {
      continue;
    }
    isReplaced = true;
    if (name->empty()) {
      check.problems.Warning(place, "in a variable, %% stands for nothing", "write one % for a percent sign");
    } else if (std::getenv(std::string(*name).c_str()) == nullptr) {
      check.problems.Note(
          place, "%" + std::string(*name) + "% is not set in this environment and stands for nothing",
          "set it for emhost, or write the text itself");
    }
    at += name->size() + 1;
  }
  if (isReplaced && check.configuration.variables.at(entry.key).size() == kExpandedLength) {
    check.problems.Warning(place, "its text is cut at 259 characters", "make it shorter");
  }
}

}  // namespace

void CheckVariables(const ConfigurationCheck& check) {
  for (const char* name : {"EnvironmentVariables", "EnvironmentVariables.Linux"}) {
    const IniSection* section = check.ini.FindSection(name);
    if (section == nullptr) {
      continue;
    }
    for (const auto& [key, index] : section->firstOf) {
      if (check.configuration.variables.contains(key)) {
        CheckVariable(check, name, section->entries[index]);
      }
    }
  }
}

}  // namespace emstatus::host
