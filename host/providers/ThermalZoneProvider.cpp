#include "host/providers/ThermalZoneProvider.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

const std::string kFolder = "/sys/class/thermal";
constexpr char kPackageZone[] = "x86_pkg_temp";
constexpr double kLowest = -40;
constexpr double kHighest = 150;
constexpr std::uint32_t kMostTrips = 64;

// 0 and less is what trip points hold that nobody has set.
std::optional<double> TripOf(const ThermalZoneSample& zone, const char* type) {
  const auto trip = zone.trips.find(type);
  if (trip == zone.trips.end() || trip->second <= 0 || trip->second > 200000) {
    return std::nullopt;
  }
  return static_cast<double>(trip->second) / 1000;
}

void JudgeTemperature(Reading& reading, double value, const ThermalZoneSample& zone) {
  Limits limits;
  limits.upperCritical = TripOf(zone, "critical");
  limits.upperWarning = TripOf(zone, "hot");
  if (limits.upperWarning && limits.upperCritical && *limits.upperWarning >= *limits.upperCritical) {
    limits.upperWarning.reset();
  }
  reading.quality = Quality::Good;
  reading.measurement = Measurement{value, Unit::Celsius, limits};
  const bool critical = limits.upperCritical && value >= *limits.upperCritical;
  const bool hot = limits.upperWarning && value >= *limits.upperWarning;
  if (critical || hot) {
    reading.condition = critical ? Condition::Critical : Condition::Warning;
    reading.reason = ValueText(value, Unit::Celsius) + ", less than " +
                     ValueText(critical ? *limits.upperCritical : *limits.upperWarning, Unit::Celsius) +
                     " expected";
    reading.advice = "look at the fans, the air flow and the temperature of the room";
  }
}

ThermalZoneSample TakeSample(SystemFiles& files, const std::string& name) {
  const std::string folder = kFolder + "/" + name;
  ThermalZoneSample sample;
  const FileResult<std::string> type = files.ReadAttribute(folder + "/type");
  sample.type = type && !type.value.empty() ? type.value : name;
  sample.mode = files.ReadAttribute(folder + "/mode").value;
  sample.temperature = files.ReadAttribute(folder + "/temp");
  for (std::uint32_t number = 0; number < kMostTrips; ++number) {
    const std::string trip = folder + "/trip_point_" + std::to_string(number);
    const FileResult<std::string> kind = files.ReadAttribute(trip + "_type");
    if (IsGone(kind.error)) {
      break;
    }
    const FileResult<std::string> text = files.ReadAttribute(trip + "_temp");
    const auto temperature = kind && text ? ParseInteger(text.value) : std::nullopt;
    if (temperature && *temperature > 0) {
      const auto [known, isNew] = sample.trips.emplace(kind.value, *temperature);
      known->second = std::min(known->second, *temperature);
    }
  }
  return sample;
}

}  // namespace

std::optional<Reading> JudgeThermalZone(const ThermalZoneSample& zone) {
  Reading reading;
  reading.objectClass = ObjectClass::ThermalZone;
  reading.customerServiceable = true;
  if (IsGone(zone.temperature.error)) {
    return std::nullopt;
  }
  if (zone.mode == "disabled") {
    SetUnknown(reading, Quality::Inactive, "switched off (mode is disabled)");
    return reading;
  }
  if (!zone.temperature) {
    SetUnread(reading, "temp", zone.temperature.error);
    return reading;
  }
  const auto raw = ParseInteger(zone.temperature.value);
  const double value = static_cast<double>(raw.value_or(0)) / 1000;
  if (!raw) {
    SetUnknown(reading, Quality::Implausible,
               "temp reads \"" + zone.temperature.value + "\", a number expected");
  } else if (value < kLowest || value > kHighest) {
    SetUnknown(reading, Quality::Implausible,
               ValueText(value, Unit::Celsius) + ", between " + ValueText(kLowest, Unit::Celsius) + " and " +
                   ValueText(kHighest, Unit::Celsius) + " possible");
  } else {
    JudgeTemperature(reading, value, zone);
  }
  return reading;
}

ThermalZoneProvider::ThermalZoneProvider(const FilesFactory& makeFiles, std::chrono::milliseconds patience)
    : files_(makeFiles()), reads_(makeFiles, patience), chipNames_(makeFiles, patience) {}

std::vector<Reading> ThermalZoneProvider::Read(const ReadContext& context) {
  const FileResult<std::vector<std::string>> names = files_->List(kFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kFolder);
  }
  std::map<std::string, DeviceReads<ThermalZoneSample>::Take> takes;
  std::map<std::uint32_t, std::string> numbered;
  for (const std::string& name : names.value) {
    if (const auto number = NumberAfter(name, "thermal_zone")) {
      takes[name] = [name](SystemFiles& files) { return TakeSample(files, name); };
      numbered.emplace(*number, name);
    }
  }
  powerSupplies_ = files_->List("/sys/class/power_supply").value;
  const auto& answers = reads_.Read(takes, context.now);
  const bool hasCoreSensors =
      std::ranges::any_of(answers,
                          [](const auto& answer) {
                            return answer.second.sample && answer.second.sample->type == kPackageZone;
                          }) &&
      HasChip("coretemp", context);
  std::vector<Reading> readings;
  std::map<std::string, int> used;
  for (const auto& [number, name] : numbered) {
    const DeviceAnswer<ThermalZoneSample>& answer = answers.at(name);
    std::vector<Reading> told;
    std::string id = name;
    if (!answer.sample) {
      told.emplace_back().objectClass = ObjectClass::ThermalZone;
      told.back().mayGo = true;
      SetLate(told.back(), context.now - answer.waitingSince.value_or(context.now));
    } else if (id = IdentityOf(answer.sample->type, used, hasCoreSensors); id.empty()) {
      continue;
    } else if (auto reading = JudgeThermalZone(*answer.sample)) {
      told.push_back(std::move(*reading));
      SetAge(told, answer.takenAt, context.now, LateAfter());
    }
    for (Reading& reading : told) {
      reading.id = id;
      reading.name = id;
      readings.push_back(std::move(reading));
    }
  }
  return readings;
}

std::string ThermalZoneProvider::IdentityOf(const std::string& type, std::map<std::string, int>& used,
                                            bool hasCoreSensors) const {
  // What the processor's own sensors tell, and tell better; what a battery tells.
  if ((type == kPackageZone && hasCoreSensors) ||
      std::ranges::find(powerSupplies_, type) != powerSupplies_.end()) {
    return "";
  }
  const int earlier = used[type]++;
  return earlier == 0 ? type : type + "#" + std::to_string(earlier + 1);
}

bool ThermalZoneProvider::HasChip(const std::string& name, const ReadContext& context) {
  const std::string chips = "/sys/class/hwmon/";
  std::map<std::string, DeviceReads<std::string>::Take> takes;
  for (const std::string& chip : files_->List(chips).value) {
    takes[chip] = [file = chips + chip + "/name"](SystemFiles& files) {
      return files.ReadAttribute(file).value;
    };
  }
  return std::ranges::any_of(chipNames_.Read(takes, context.now),
                             [&](const auto& answer) { return answer.second.sample == name; });
}

}  // namespace emstatus::host
