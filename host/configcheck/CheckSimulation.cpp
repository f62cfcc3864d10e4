#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string_view>

#include "host/configcheck/Checks.h"
#include "host/simulation/SimulationFile.h"
#include "host/simulation/SimulationNames.h"

namespace emstatus::host {
namespace {

constexpr const char* kSimulationToCheck = "EM_STATUS_simu.ini";
constexpr const char* kParts = "Components";

const std::vector<KnownSection>& SimulationSections() {
  static const std::vector<KnownSection> kKnown = {
      {.name = "Info", .keys = {"Filename"}, .prefixes = {}},
      {.name = "Config", .keys = {"Active"}, .prefixes = {}},
      {.name = "Components", .keys = {}, .isFree = true, .prefixes = {}},
      {.name = "Emhost", .keys = {"Until"}, .prefixes = {}},
  };
  return kKnown;
}

/// An entry NAME.TYPE=VALUE.
void CheckSimulatedEntry(const IniFile& ini, const IniEntry& entry, const Configuration& configuration,
                         const SimulationNames& names, Problems& problems) {
  const Problems::Place place{entry.line, kParts, entry.key};
  const std::size_t dot = entry.key.find('.');
  if (dot == 0 || dot + 1 >= entry.key.size() || std::ranges::count(entry.key, '.') != 1) {
    problems.Error(place, "it is not NAME.ObjectStatus, NAME.MappedStatus or NAME.IsCss, and is passed over",
                   "write one of these");
    return;
  }
  const std::string type = entry.key.substr(dot + 1);
  if (type != "ObjectStatus" && type != "MappedStatus" && type != "IsCss") {
    problems.Error(place, Quoted(type) + " forces nothing of its own, but makes the status 0",
                   DidYouMean(type, {"ObjectStatus", "MappedStatus", "IsCss"},
                              "write ObjectStatus, MappedStatus or IsCss"));
    return;
  }
  CheckNumber(ini, kParts, entry.key, 0, problems);
  try {
    names.Check(entry.key.substr(0, dot));
  } catch (const std::runtime_error& unknown) {
    problems.Error(place, std::string("nothing is forced: ") + unknown.what(), "write another name");
  }
  const std::int32_t value = ini.Number(kParts, entry.key, 0);
  if (type == "MappedStatus" && value != 0 &&
      (value < 0 || value > Configuration::kLargestStatus ||
       !configuration.statusNames.contains(static_cast<std::uint8_t>(value)))) {
    problems.Warning(place, std::to_string(value) + " is no status of [StatusMapping]",
                     "write one of its values");
  }
}

void CheckParts(const IniFile& ini, const SimulatedParts& parts, Problems& problems) {
  const auto has = [&](const std::string& name, const char* type) {
    return ini.Find(kParts, name + "." + type) != nullptr;
  };
  for (const auto& [name, part] : parts) {
    if (has(name, "IsCss") && !has(name, "MappedStatus") && !has(name, "ObjectStatus")) {
      problems.Warning(PlaceOf(ini, kParts, name + ".IsCss"), "alone it makes the status 0 as well",
                       "write " + name + ".MappedStatus, too");
    }
    if (part.objectStatus != SimulatedPart::kNotSimulated && has(name, "MappedStatus") &&
        part.mappedStatus != 0) {
      problems.Note(PlaceOf(ini, kParts, name + ".MappedStatus"),
                    "it has no effect while there is an ObjectStatus", "take one of them out");
    }
  }
}

void CheckState(const IniFile& ini, const SimulationFile& file, Problems& problems) {
  const Problems::Place place = PlaceOf(ini, "Config", "Active");
  CheckNumber(ini, "Config", "Active", 0, problems);
  if (!file.active) {
    problems.Note(place, "the simulation is switched off", "write Active=1, or take the file away");
  } else if (file.IsOver(std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()))) {
    problems.Warning(place, "the simulation is over, but the module goes on with it until emhost runs",
                     "take the file away, or say emhost simulate --clear");
  } else if (file.until) {
    problems.Note(place, "statuses are being forced", "emhost simulate --clear ends it");
  } else {
    problems.Warning(place, "statuses are being forced, and nothing ends that by itself",
                     "take the file away, or say emhost simulate --clear");
  }
}

}  // namespace

std::vector<Problem> CheckSimulation(std::string_view text, const Configuration& configuration,
                                     std::string_view configurationText, const std::string& file) {
  Problems problems(file);
  const IniFile ini(text);
  CheckLines(ini, SimulationSections(), problems);
  if (ini.Value("Info", "Filename") != kSimulationToCheck) {
    problems.Error(PlaceOf(ini, "Info", "Filename"),
                   "it does not say Filename=EM_STATUS_simu.ini, so that nothing is forced",
                   "write Filename=EM_STATUS_simu.ini into [Info]");
    return problems.InOrder();
  }
  const SimulationFile simulation = ReadSimulation(text);
  CheckState(ini, simulation, problems);
  const SimulationNames names(configurationText);
  if (const IniSection* section = ini.FindSection(kParts)) {
    for (const IniEntry& entry : section->entries) {
      if (!entry.key.empty() && ini.Find(kParts, entry.key) == &entry) {
        CheckSimulatedEntry(ini, entry, configuration, names, problems);
      }
    }
  }
  CheckParts(ini, simulation.parts, problems);
  return problems.InOrder();
}

}  // namespace emstatus::host
