#include <cstdlib>
#include <map>

#include "host/configcheck/Checks.h"

namespace emstatus::host {
namespace {

constexpr const char* kNames = "StatusMapping";
/// From this value on, a status is shown but nothing is derived from it.
constexpr std::int32_t kFirstInert = 6;

void CheckStatusName(const ConfigurationCheck& check, const std::string& name,
                     std::map<std::int64_t, std::string>& seen) {
  const Problems::Place place = PlaceOf(check.ini, kNames, name);
  CheckNumber(check.ini, kNames, name, 10, check.problems);
  const auto text = check.ini.Value(kNames, name);
  const long value = std::strtol(text.value_or("0").c_str(), nullptr, 10);
  if (!text) {
    check.problems.Error(place, "it has no value; 0 is used", "write a value from 0 to 255");
  }
  if (name.find_first_of(" \t") != std::string::npos) {
    check.problems.Error(place, "no map entry can use a name with a blank in it", "write it in one word");
  }
  if (value < 0 || value > Configuration::kLargestStatus) {
    check.problems.Error(place,
                         value < 0 ? "a status cannot be negative; " +
                                         std::to_string(static_cast<std::uint8_t>(value)) + " is used"
                                   : "the value is above 255, so that the name is left out",
                         "write a value from 0 to 255");
    return;
  }
  if (value >= kFirstInert) {
    check.problems.Note(place, "a status from 6 on is shown, but no subsystem and no system gets it",
                        "write 1, 2 or 3 when it is to count");
  }
  if (const auto [earlier, isNew] = seen.try_emplace(value, name); !isNew) {
    check.problems.Note(place,
                        "it has the value of " + Quoted(earlier->second) + "; where it is shown, it is " +
                            Quoted(check.configuration.statusNames.at(static_cast<std::uint8_t>(value))),
                        "give each status one name");
  }
}

}  // namespace

void CheckStatusNames(const ConfigurationCheck& check) {
  std::map<std::int64_t, std::string> seen;
  const IniSection* section = check.ini.FindSection(kNames);
  if (section != nullptr) {
    for (const IniEntry& entry : section->entries) {
      if (!entry.key.empty() && check.ini.Find(kNames, entry.key) == &entry) {
        CheckStatusName(check, entry.key, seen);
      }
    }
  }
  const Problems::Place place{section == nullptr ? 1 : section->line, kNames};
  if (check.configuration.statusNames.empty()) {
    check.problems.Error(place, "it names no status, so that every map entry is refused",
                         "write NoStatus=0, OK=1, Warning=2 and Error=3, each on a line");
    return;
  }
  const char* const meanings[] = {"good", "degraded", "failed"};
  for (std::uint8_t value = 1; value <= 3; ++value) {
    if (!check.configuration.statusNames.contains(value)) {
      check.problems.Warning(place,
                             std::string("no name has the value ") + std::to_string(value) + " (" +
                                 meanings[value - 1] + "), so that no map entry can mean it",
                             "give it a name");
    }
  }
}

}  // namespace emstatus::host
