#include "host/recording/ConfigurationEnvironment.h"

#include <cstddef>

#include "host/configuration/IniFile.h"
#include "host/configuration/Placeholders.h"

namespace emstatus::host {

std::set<std::string> EnvironmentOf(std::string_view configurationText) {
  const IniFile ini(configurationText);
  std::set<std::string> names;
  for (const char* section : {"EnvironmentVariables", "EnvironmentVariables.Linux"}) {
    for (const std::string& key : ini.Keys(section)) {
      const std::string value = ini.Value(section, key).value_or("");
      for (std::size_t at = value.find('%'); at != std::string::npos;) {
        const auto name = PlaceholderAt(value, at);
        if (name && !name->empty()) {
          names.emplace(*name);
        }
        at = value.find('%', at + (name ? name->size() + 2 : 1));
      }
    }
  }
  return names;
}

}  // namespace emstatus::host
