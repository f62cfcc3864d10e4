#include "host/providers/PowerSupplyJudge.h"

#include <algorithm>
#include <utility>

#include "host/providers/Blame.h"
#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

constexpr double kLow = 20;
constexpr double kVeryLow = 10;
constexpr double kWorn = 50;

struct HealthRow {
  const char* word;
  Quality quality;
  Condition condition;
};

constexpr HealthRow kHealth[] = {
    {"Good", Quality::Good, Condition::Good},
    {"Unknown", Quality::Good, Condition::Good},
    {"No battery", Quality::Inactive, Condition::Good},
    {"Dead", Quality::Good, Condition::Critical},
    {"Overheat", Quality::Good, Condition::Critical},
    {"Over voltage", Quality::Good, Condition::Critical},
    {"Over current", Quality::Good, Condition::Critical},
    {"Unspecified failure", Quality::Good, Condition::Critical},
};

std::string Text(const PowerSupplyValues& values, const char* name) {
  const auto found = values.find(name);
  return found != values.end() && found->second ? found->second.value : "";
}

std::optional<double> Number(const PowerSupplyValues& values, const char* name) {
  const auto number = ParseInteger(Text(values, name));
  return number ? std::optional(static_cast<double>(*number)) : std::nullopt;
}

void JudgeHealth(Reading& reading, const PowerSupplyValues& values) {
  const std::string health = Text(values, "health");
  if (health.empty()) {
    return;
  }
  const auto* row = std::ranges::find_if(kHealth, [&](const HealthRow& one) { return health == one.word; });
  if (row != std::end(kHealth) && row->quality == Quality::Inactive) {
    SetUnknown(reading, Quality::Inactive, "no battery in it");
    return;
  }
  // Words that the kernel adds (Cold, Warm, Watchdog timer expire, ...) are not good.
  const Condition condition = row == std::end(kHealth) ? Condition::Warning : row->condition;
  Blame(reading, condition, "its health is \"" + health + "\", \"Good\" expected",
        "replace it when this stays");
}

void JudgeSupply(Reading& reading, const PowerSupplyValues& values) {
  const auto online = Number(values, "online");
  if (!online) {
    if (const std::string text = Text(values, "online"); !text.empty()) {
      SetUnknown(reading, Quality::Implausible, "online reads \"" + text + "\", a number expected");
    }
  } else if (*online == 0 && IsMains(values)) {
    Blame(reading, Condition::Warning, "does not feed the machine: no power comes in",
          "look at its cable, plug and fuse");
  } else if (*online == 0 && reading.condition == Condition::Good) {
    SetUnknown(reading, Quality::Inactive, "nothing is connected to it");
  }
}

void JudgeCharge(Reading& reading, const PowerSupplyValues& values) {
  const auto capacity = Number(values, "capacity");
  const std::string level = Text(values, "capacity_level");
  const bool discharges = Text(values, "status") == "Discharging";
  if (capacity && (*capacity < 0 || *capacity > 100)) {
    SetUnknown(reading, Quality::Implausible,
               Format("charge of %.0f %%, between 0 %% and 100 %% possible", *capacity));
    return;
  }
  if (capacity) {
    reading.measurement = Measurement{*capacity, Unit::Percent, {}};
    reading.measurement->limits.lowerWarning = kLow;
    reading.measurement->limits.lowerCritical = kVeryLow;
  }
  if (capacity && discharges && *capacity < kLow) {
    Blame(reading, *capacity < kVeryLow ? Condition::Critical : Condition::Warning,
          Format("discharging, %.0f %% left, at least %.0f %% expected", *capacity, kLow),
          "bring the mains power back, or shut the machine down");
  } else if (discharges && level == "Critical") {
    Blame(reading, Condition::Critical, "discharging, its charge is critical",
          "bring the mains power back, or shut the machine down");
  } else if (discharges && reading.reason.empty()) {
    reading.reason = "discharging";
  }
}

void JudgeWear(Reading& reading, const PowerSupplyValues& values) {
  for (const char* kind : {"charge", "energy"}) {
    const auto now = Number(values, (std::string(kind) + "_full").c_str());
    const auto design = Number(values, (std::string(kind) + "_full_design").c_str());
    if (now && design && *design > 0 && *now > 0 && *now / *design * 100 < kWorn) {
      Blame(reading, Condition::Warning,
            Format("worn: holds %.0f %% of what it was made for, at least %.0f %% expected",
                   *now / *design * 100, kWorn),
            "replace the battery");
    }
  }
}

Reading TemperatureOf(const std::string& name, const FileResult<std::string>& text,
                      const PowerSupplyValues& values) {
  Reading reading;
  reading.objectClass = ObjectClass::Temperature;
  reading.id = name + "/temp";
  reading.name = name + " temp";
  const auto raw = ParseInteger(text.value);
  // In tenths of a degree, unlike any other temperature of the kernel.
  const double value = static_cast<double>(raw.value_or(0)) / 10;
  if (!text) {
    SetUnread(reading, "temp", text.error);
  } else if (!raw || value < -40 || value > 150) {
    SetUnknown(reading, Quality::Implausible,
               "temp reads \"" + text.value + "\" (tenths of a °C), between -400 and 1500 possible");
  } else {
    reading.quality = Quality::Good;
    reading.measurement = Measurement{value, Unit::Celsius, {}};
    const auto most = Number(values, "temp_alert_max");
    if (most && *most > 0) {
      reading.measurement->limits.upperWarning = *most / 10;
      if (value >= *most / 10) {
        Blame(reading, Condition::Warning,
              ValueText(value, Unit::Celsius) + ", less than " + ValueText(*most / 10, Unit::Celsius) +
                  " expected",
              "look at the air flow and the temperature of the room");
      }
    }
  }
  return reading;
}

// What cannot be read of an attribute, without which too little can be said; one that has no value now is
// none.
const FileResult<std::string>* Unreadable(const PowerSupplyValues& values, const char* name) {
  const auto found = values.find(name);
  const bool isBad = found != values.end() && found->second.error != 0 &&
                     QualityOfError(found->second.error) != Quality::Inactive;
  return isBad ? &found->second : nullptr;
}

bool TellsNothing(const PowerSupplyValues& values) {
  constexpr const char* kTelling[] = {"online", "status", "health", "capacity", "capacity_level"};
  return std::ranges::all_of(kTelling, [&](const char* name) { return Text(values, name).empty(); });
}

}  // namespace

const std::vector<std::string>& PowerSupplyAttributes() {
  static const std::vector<std::string> kAttributes = {"type",
                                                       "scope",
                                                       "online",
                                                       "present",
                                                       "status",
                                                       "health",
                                                       "capacity",
                                                       "charge_full",
                                                       "charge_full_design",
                                                       "energy_full",
                                                       "energy_full_design",
                                                       "temp",
                                                       "temp_alert_max",
                                                       "capacity_level"};
  return kAttributes;
}

bool FeedsADevice(const PowerSupplyValues& values) {
  return Text(values, "scope") == "Device";
}

bool IsBattery(const PowerSupplyValues& values) {
  const std::string type = Text(values, "type");
  return type == "Battery" || type == "UPS";
}

std::vector<Reading> JudgePowerSupply(const std::string& name, const PowerSupplyValues& values,
                                      bool withTemperature) {
  Reading reading;
  const bool isBattery = IsBattery(values);
  reading.objectClass = isBattery ? ObjectClass::Battery : ObjectClass::PowerSupply;
  reading.id = name;
  reading.name = name;
  reading.quality = Quality::Good;
  reading.customerServiceable = true;
  const auto present = Number(values, "present");
  if (present && *present == 0) {
    SetUnknown(reading, Quality::Inactive, "not present: the bay is empty");
    return {reading};
  }
  for (const char* attribute : {isBattery ? "status" : "online", "health", "capacity"}) {
    if (const FileResult<std::string>* text = Unreadable(values, attribute)) {
      SetUnread(reading, attribute, text->error);
      return {reading};
    }
  }
  if (TellsNothing(values)) {
    SetUnknown(reading, Quality::Inactive, "tells nothing of its state");
    return {reading};
  }
  JudgeHealth(reading, values);
  if (reading.quality == Quality::Good) {
    if (isBattery) {
      JudgeWear(reading, values);
      JudgeCharge(reading, values);
    } else {
      JudgeSupply(reading, values);
    }
  }
  std::vector<Reading> readings = {std::move(reading)};
  const auto temperature = values.find("temp");
  if (withTemperature && temperature != values.end() && !IsGone(temperature->second.error)) {
    readings.push_back(TemperatureOf(name, temperature->second, values));
  }
  return readings;
}

bool IsMains(const PowerSupplyValues& values) {
  return Text(values, "type") == "Mains";
}

void GroupMains(std::vector<Reading>& readings, const std::set<std::string>& mains) {
  Redundancy group{"mains", 0, 1, 0};
  const auto belongs = [&](const Reading& reading) {
    return reading.objectClass == ObjectClass::PowerSupply && reading.quality != Quality::Inactive &&
           mains.contains(reading.id);
  };
  for (const Reading& reading : readings) {
    if (belongs(reading)) {
      ++group.members;
      group.present += reading.quality == Quality::Good && reading.condition == Condition::Good ? 1 : 0;
    }
  }
  for (Reading& reading : readings) {
    if (group.members > 1 && belongs(reading)) {
      reading.redundancy = group;
    }
  }
}

}  // namespace emstatus::host
