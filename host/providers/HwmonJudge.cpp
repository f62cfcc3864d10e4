#include "host/providers/HwmonJudge.h"

#include <algorithm>
#include <utility>

#include "host/providers/Blame.h"
#include "host/providers/HwmonLimits.h"
#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

using Clock = HwmonMemory::Clock;

// Everything that the steps of judging one channel share.
struct Case {
  const HwmonChannelKey& key;
  const HwmonValues& values;
  HwmonMemory& memory;
  Clock::time_point now;
  Reading reading;
  std::vector<HwmonLimit> limits;

  const HwmonType& Type() const { return *key.type; }
  std::string Attribute(std::string_view item) const { return key.Text() + "_" + std::string(item); }
  std::string Text(double value) const { return ValueText(value, Type().unit); }
};

const char* AdviceFor(ObjectClass objectClass) {
  switch (objectClass) {
    case ObjectClass::Temperature:
      return "look at the fans, the air flow and the temperature of the room";
    case ObjectClass::Fan:
      return "look whether something blocks the fan, else replace it";
    case ObjectClass::Intrusion:
      return "look into the chassis, close it, then confirm the alarm";
    case ObjectClass::Humidity:
      return "look at the air conditioning of the room";
    case ObjectClass::Voltage:
    case ObjectClass::Current:
    case ObjectClass::Power:
      return "look at the power supply and at what it feeds";
    default:
      return "";
  }
}

bool CustomerServices(ObjectClass objectClass) {
  return objectClass == ObjectClass::Temperature || objectClass == ObjectClass::Fan ||
         objectClass == ObjectClass::Intrusion || objectClass == ObjectClass::Humidity;
}

std::string Expectation(const Case& the, const HwmonLimit& limit) {
  return (limit.isUpper ? "less than " : "at least ") + the.Text(*limit.value) + " expected";
}

// Takes note of an alarm; the time since it was last seen while it still counts.
std::optional<Clock::duration> HeldAlarm(Case& the, const std::string& item) {
  if (IsSet(the.values, item)) {
    the.memory.alarms[item] = the.now;
  }
  const auto seen = the.memory.alarms.find(item);
  if (seen == the.memory.alarms.end()) {
    return std::nullopt;
  }
  if (the.now - seen->second >= kAlarmHold) {
    the.memory.alarms.erase(seen);
    return std::nullopt;
  }
  return the.now - seen->second;
}

std::string AlarmText(const Case& the, const std::string& item, Clock::duration age, double value) {
  const std::string when = age == Clock::duration::zero()
                               ? ""
                               : " " + SpanText(std::chrono::duration<double>(age).count()) + " ago";
  return the.Attribute(item) + " was set" + when + ", " + the.Text(value) + " now";
}

void NoteStolen(Case& the, const std::string& item) {
  the.reading.reason +=
      "; " + the.Attribute(item) + " reads 0 all the same: does another program read the alarms away?";
}

void JudgePassing(Case& the, const HwmonLimit& limit, double value) {
  const bool isBeyond = IsPassed(limit, the.Type(), value);
  const bool wasBeyond = the.memory.passed.contains(limit.item);
  const bool isHeld = wasBeyond && limit.hysteresis &&
                      (limit.isUpper ? value > *limit.hysteresis : value < *limit.hysteresis);
  if (!isBeyond && !isHeld) {
    if (wasBeyond) {
      the.memory.passed.erase(the.memory.passed.find(limit.item));
    }
    return;
  }
  the.memory.passed.emplace(limit.item);
  std::string reason = the.Text(value) + ", " + Expectation(the, limit);
  if (!isBeyond) {
    reason = the.Text(value) + ", was beyond " + the.Text(*limit.value) + " and clears at " +
             the.Text(*limit.hysteresis);
  }
  Blame(the.reading, limit.condition, std::move(reason));
}

void JudgeAlarm(Case& the, const HwmonLimit& limit, double value) {
  const std::string item = std::string(limit.item) + "_alarm";
  if (!the.values.contains(item) || (limit.isTold && !limit.value)) {
    return;
  }
  const auto age = HeldAlarm(the, item);
  if (age) {
    std::string reason = AlarmText(the, item, *age, value);
    reason += limit.value ? ", " + Expectation(the, limit) : "";
    Blame(the.reading, limit.condition, std::move(reason));
  } else if (limit.value && limit.item != "cap" && value != *limit.value &&
             IsPassed(limit, the.Type(), value)) {
    NoteStolen(the, item);
  }
}

// An alarm for the whole channel tells nothing when none of its limits was ever set.
bool MeansSomething(const Case& the) {
  const auto told = std::ranges::count_if(the.limits, &HwmonLimit::isTold);
  return told == 0 ||
         std::ranges::any_of(the.limits, [](const HwmonLimit& limit) { return limit.value.has_value(); });
}

bool IsAnyPassed(const Case& the, double value) {
  return std::ranges::any_of(the.limits, [&](const HwmonLimit& limit) {
    return value != limit.value && IsPassed(limit, the.Type(), value);
  });
}

void JudgeChannelAlarm(Case& the, double value) {
  if (!IsSet(the.values, "alarm") && !the.memory.alarms.contains("alarm")) {
    if (the.values.contains("alarm") && IsAnyPassed(the, value)) {
      NoteStolen(the, "alarm");
    }
    return;
  }
  if (!MeansSomething(the)) {
    if (the.reading.reason.empty()) {
      the.reading.reason = the.Attribute("alarm") + " is ignored: its limits were never set";
    }
    return;
  }
  if (const auto age = HeldAlarm(the, "alarm")) {
    if (the.reading.condition == Condition::Good) {
      the.reading.reason.clear();
    }
    const bool isStopped = the.Type().objectClass == ObjectClass::Fan && value == 0;
    Blame(the.reading, isStopped ? Condition::Critical : Condition::Warning,
          AlarmText(the, "alarm", *age, value));
  }
}

void JudgeStoppedFan(Case& the) {
  const HwmonLimit& least = the.limits.front();
  const auto target = NumberOf(the.values, "target", 1);
  const auto control = NumberOf(the.values, "pwm", 1);
  Reading& reading = the.reading;
  if (least.value || (target && *target > 0)) {
    reading.condition = Condition::Critical;
    reading.reason = the.Text(0) + ", " +
                     (least.value ? Expectation(the, least) : the.Text(*target) + " expected, its target");
  } else if (reading.condition != Condition::Good) {
    return;
  } else if (control && *control == 0) {
    SetUnknown(reading, Quality::Inactive, the.Text(0) + ": stopped by its control, and no minimum is set");
  } else if (the.memory.wasGood) {
    Blame(reading, Condition::Warning, the.Text(0) + ", though it has turned before; no minimum is set");
  } else {
    SetUnknown(reading, Quality::Inactive,
               the.Text(0) + ": no minimum is set and it has never turned; no fan connected?");
  }
}

void JudgeIntrusion(Case& the) {
  const bool isOpen = IsSet(the.values, "alarm");
  the.memory.wasGood = the.memory.wasGood || !isOpen;
  if (isOpen && the.memory.wasGood) {
    Blame(the.reading, Condition::Warning, "the chassis was opened; the alarm stays until it is confirmed");
  } else if (isOpen) {
    SetUnknown(
        the.reading, Quality::Inactive,
        "the alarm was set before reading began, as it is after power-up; confirm it to arm the contact");
  }
}

void JudgeValue(Case& the, double value) {
  the.limits = LimitsOf(the.Type(), the.values);
  the.reading.measurement = Measurement{value, the.Type().unit, SummaryOf(the.limits)};
  for (const HwmonLimit& limit : the.limits) {
    JudgePassing(the, limit, value);
  }
  for (const HwmonLimit& limit : the.limits) {
    JudgeAlarm(the, limit, value);
  }
  JudgeChannelAlarm(the, value);
  if (the.Type().objectClass == ObjectClass::Fan) {
    if (value == 0) {
      JudgeStoppedFan(the);
    } else {
      the.memory.wasGood = true;
    }
  }
}

// A channel without a value: only its alarms speak.
void JudgeAlarmsOnly(Case& the) {
  for (const auto& [item, text] : the.values) {
    if (item.ends_with("alarm") && HeldAlarm(the, item)) {
      const bool critical = item.find("crit") != std::string::npos || item == "emergency_alarm";
      Blame(the.reading, critical ? Condition::Critical : Condition::Warning,
            the.Attribute(item) + " is set");
    }
  }
}

void JudgeText(Case& the, const std::string& item, const std::string& text) {
  const auto raw = ParseInteger(text);
  if (!raw) {
    SetUnknown(the.reading, Quality::Implausible,
               the.Attribute(item) + " reads \"" + text + "\", a number expected");
    return;
  }
  const double value = static_cast<double>(*raw) / the.Type().divisor;
  if (IsSentinel(*raw)) {
    SetUnknown(the.reading, Quality::Implausible,
               the.Text(value) + " is what a device gives that has no value (" + text + ")");
  } else if (value < the.Type().lowest || value > the.Type().highest) {
    SetUnknown(the.reading, Quality::Implausible,
               the.Text(value) + ", between " + the.Text(the.Type().lowest) + " and " +
                   the.Text(the.Type().highest) + " possible");
  } else {
    JudgeValue(the, value);
  }
}

// Whether the channel is switched off or says itself that it is broken; its value then means nothing.
bool IsOut(Case& the) {
  if (const auto enable = NumberOf(the.values, "enable", 1); enable && *enable == 0) {
    SetUnknown(the.reading, Quality::Inactive, "switched off (" + the.Attribute("enable") + " is 0)");
    return true;
  }
  if (IsSet(the.values, "fault")) {
    SetUnknown(
        the.reading, Quality::SensorFault,
        "the chip says that the sensor is broken or not connected (" + the.Attribute("fault") + " is 1)");
    return true;
  }
  return false;
}

bool IsAnyReadable(const HwmonValues& values) {
  return std::ranges::any_of(values, [](const auto& value) { return value.second.error == 0; });
}

}  // namespace

std::optional<Reading> JudgeChannel(const HwmonChannelKey& key, const HwmonValues& values,
                                    HwmonMemory& memory, Clock::time_point now) {
  Case the{key, values, memory, now, {}, {}};
  the.reading.objectClass = key.type->objectClass;
  the.reading.quality = Quality::Good;
  the.reading.customerServiceable = CustomerServices(key.type->objectClass);
  const auto input = values.contains("input") ? values.find("input") : values.find("average");
  const bool isContact = key.type->objectClass == ObjectClass::Intrusion;
  if (input == values.end() || isContact) {
    const auto alarm = values.find("alarm");
    if (!IsAnyReadable(values)) {
      if (alarm == values.end() || IsGone(alarm->second.error)) {
        return std::nullopt;
      }
      SetUnread(the.reading, the.Attribute("alarm"), alarm->second.error);
    } else if (!IsOut(the)) {
      isContact ? JudgeIntrusion(the) : JudgeAlarmsOnly(the);
    }
  } else if (IsGone(input->second.error)) {
    return std::nullopt;
  } else if (!IsOut(the)) {
    if (input->second) {
      JudgeText(the, input->first, input->second.value);
    } else {
      SetUnread(the.reading, the.Attribute(input->first), input->second.error);
    }
  }
  if (the.reading.quality == Quality::Good && the.reading.condition != Condition::Good) {
    the.reading.advice = AdviceFor(key.type->objectClass);
  }
  return the.reading;
}

void DistrustTachometers(std::vector<Reading>& readingsOfChip, const std::string& chip) {
  std::vector<Reading*> stopped;
  for (Reading& reading : readingsOfChip) {
    if (reading.objectClass != ObjectClass::Fan || reading.quality != Quality::Good || !reading.measurement) {
      continue;
    }
    if (reading.measurement->value > 0) {
      return;
    }
    stopped.push_back(&reading);
  }
  if (stopped.size() < 2) {
    return;
  }
  Reading& first = *stopped.front();
  SetUnknown(
      first, Quality::SensorFault,
      Format("tachometer not trusted: all %zu fans of ", stopped.size()) + chip + " read 0 RPM at once");
  first.advice = "look whether the fans turn; if they do, the chip or its wiring is at fault";
  for (Reading* other : stopped) {
    if (other != &first) {
      SetUnknown(*other, Quality::Inactive, "tachometer not trusted, see " + first.name);
      other->advice.clear();
    }
  }
}

}  // namespace emstatus::host
