#include <limits>

#include "host/configcheck/Checks.h"

namespace emstatus::host {
namespace {

constexpr const char* kSettings = "Configuration";
constexpr std::uint32_t kMillisecondsPerSecond = 1000;
/// What the module's pauses, in milliseconds of 32 bits, can hold.
constexpr std::int32_t kLongestPause = std::numeric_limits<std::uint32_t>::max() / kMillisecondsPerSecond - 1;
constexpr std::int32_t kHour = 3600;
constexpr std::int32_t kManyCycles = 1000;

void CheckPause(const ConfigurationCheck& check, const std::string& key, std::int32_t seconds) {
  const Problems::Place place = PlaceOf(check.ini, kSettings, key);
  if (seconds < 0 || seconds > kLongestPause) {
    const std::uint32_t wrapped = static_cast<std::uint32_t>(seconds) * kMillisecondsPerSecond;
    check.problems.Error(place,
                         std::to_string(seconds) +
                             " seconds do not fit into the module's clock, which waits " +
                             std::to_string(wrapped / kMillisecondsPerSecond) + " s instead",
                         "write 0 to " + std::to_string(kLongestPause));
  } else if (seconds > kHour) {
    check.problems.Warning(place, std::to_string(seconds) + " seconds are more than an hour without a scan",
                           "a fault can go unseen as long; write a shorter time");
  }
}

void CheckPauses(const ConfigurationCheck& check) {
  const Configuration& c = check.configuration;
  CheckPause(check, "InitialPollingDelaySeconds", c.initialPollingDelay);
  CheckPause(check, "PollingRateSeconds", c.pollingRate);
  CheckPause(check, "AdvancedPollingRateSeconds", c.advancedPollingRate);
  const auto place = [&](const char* key) { return PlaceOf(check.ini, kSettings, key); };
  if (c.pollingRate == 0) {
    check.problems.Warning(place("PollingRateSeconds"), "0 makes one scan follow the other without a pause",
                           "write at least 1");
  }
  if (c.advancedPollingRate == 0 && c.advancedPollingCycles > 1) {
    check.problems.Warning(place("AdvancedPollingRateSeconds"),
                           "0 makes the first scans follow each other without a pause", "write at least 1");
  }
  if (c.pollingRate > 0 && c.advancedPollingRate > c.pollingRate && c.advancedPollingCycles > 1) {
    check.problems.Warning(place("AdvancedPollingRateSeconds"),
                           "the first scans are further apart than later ones (" +
                               std::to_string(c.advancedPollingRate) + " s, then " +
                               std::to_string(c.pollingRate) + " s)",
                           "write at most PollingRateSeconds");
  }
}

void CheckCycles(const ConfigurationCheck& check) {
  const std::int32_t cycles = check.configuration.advancedPollingCycles;
  const Problems::Place place = PlaceOf(check.ini, kSettings, "AdvancedPollingCycles");
  if (cycles == 0) {
    check.problems.Warning(
        place,
        "0 means that no names are asked of the host, that silent components are asked for "
        "ever, and inactive ones never",
        "write at least 2");
  } else if (cycles == 1) {
    check.problems.Warning(place,
                           "1 means that no names are asked of the host, and that a component is inactive "
                           "after one scan without an answer",
                           "write at least 2");
  } else if (cycles < 0 || cycles > kManyCycles) {
    check.problems.Warning(place,
                           std::to_string(static_cast<std::uint32_t>(cycles)) +
                               " scans pass before a silent mandatory component is judged or an inactive one "
                               "is asked again",
                           "write 2 to " + std::to_string(kManyCycles));
  }
}

bool HasMandatory(const Configuration& configuration) {
  for (const auto& [name, definition] : configuration.components) {
    if (definition.isUsable && definition.category == Category::Mandatory) {
      return true;
    }
  }
  return false;
}

void CheckFailStatus(const ConfigurationCheck& check) {
  const Configuration& c = check.configuration;
  const Problems::Place place = PlaceOf(check.ini, kSettings, "StatusValueQueryFail");
  const std::int32_t written = check.ini.Number(kSettings, "StatusValueQueryFail", 0);
  if (written < 0 || written > Configuration::kLargestStatus) {
    check.problems.Error(
        place,
        std::to_string(written) + " is no status value; " + std::to_string(c.queryFailStatus) + " is used",
        "write a value of [StatusMapping]");
  } else if (written != 0 && !c.statusNames.contains(c.queryFailStatus)) {
    check.problems.Warning(place, "[StatusMapping] has no name for " + std::to_string(written),
                           "write one of its values");
  } else if (written < 2 && HasMandatory(c)) {
    check.problems.Warning(place,
                           "a mandatory component that does not answer gets the status " +
                               std::to_string(written) + ", so that nobody hears of it",
                           "write the value of a warning or an error");
  }
}

}  // namespace

void CheckIdentity(const ConfigurationCheck& check) {
  const auto place = [&](const char* key) { return PlaceOf(check.ini, "Info", key); };
  const auto name = check.ini.Value("Info", "Filename");
  if (name != Configuration::kFileName) {
    check.problems.Error(
        place("Filename"),
        (name ? "it is " + Quoted(*name) : std::string("it is missing")) + ", so the module refuses the file",
        std::string("write Filename=") + Configuration::kFileName);
  }
  const std::int32_t version = check.ini.Number("Info", "LayoutVersion", 0);
  if (version != Configuration::kLayoutVersion) {
    const bool isThere = check.ini.Value("Info", "LayoutVersion").has_value();
    check.problems.Error(place("LayoutVersion"),
                         (isThere ? "it is " + std::to_string(version) : std::string("it is missing")) +
                             ", so the module refuses the file",
                         "write LayoutVersion=" + std::to_string(Configuration::kLayoutVersion));
  }
}

void CheckSettings(const ConfigurationCheck& check) {
  for (const char* key : {"InitialPollingDelaySeconds", "PollingRateSeconds", "AdvancedPollingRateSeconds",
                          "AdvancedPollingCycles", "StatusValueQueryFail", "StatusValueUndefinedMapping"}) {
    CheckNumber(check.ini, kSettings, key, 0, check.problems);
  }
  CheckPauses(check);
  CheckCycles(check);
  CheckFailStatus(check);
  if (check.configuration.undefinedMappingStatus != 0) {
    check.problems.Warning(PlaceOf(check.ini, kSettings, "StatusValueUndefinedMapping"),
                           "it is read but has no effect",
                           "write Status.Other=NAME * into the components instead");
  }
}

}  // namespace emstatus::host
