#include "host/machine/Numbering.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace emstatus::host {
namespace {

constexpr ClassRow kClasses[] = {
    {ObjectClass::Temperature, "temperature", "Temperatures", 0},
    {ObjectClass::Fan, "fan", "Fans", 0},
    {ObjectClass::Voltage, "voltage", "Voltages", 0},
    {ObjectClass::Current, "current", "Currents", 0},
    {ObjectClass::Power, "power", "Power readings", 0},
    {ObjectClass::Humidity, "humidity", "Humidity", 0},
    {ObjectClass::Intrusion, "intrusion", "Chassis intrusion", 0},
    {ObjectClass::ThermalZone, "thermal-zone", "Thermal zones", 0},
    {ObjectClass::PowerSupply, "power-supply", "Power supplies", 1},
    {ObjectClass::Battery, "battery", "Batteries", 1},
    {ObjectClass::Processor, "processor", "Processors", 0},
    {ObjectClass::ProcessorThrottle, "processor-throttle", "Processor throttling", 0},
    {ObjectClass::CpuPressure, "cpu-pressure", "Processor pressure", 0},
    {ObjectClass::MemoryModule, "memory-module", "Memory modules", 1},
    {ObjectClass::MemoryUse, "memory-use", "Memory use", 0},
    {ObjectClass::SwapUse, "swap-use", "Swap use", 0},
    {ObjectClass::MemoryPressure, "memory-pressure", "Memory pressure", 0},
    {ObjectClass::Disk, "disk", "Disks", 1},
    {ObjectClass::DiskTemperature, "disk-temperature", "Disk temperatures", 1},
    {ObjectClass::RaidArray, "raid-array", "RAID arrays", 0},
    {ObjectClass::RaidMember, "raid-member", "RAID members", 0},
    {ObjectClass::StorageController, "storage-controller", "Storage controllers", 0},
    {ObjectClass::IoPressure, "io-pressure", "I/O pressure", 0},
    {ObjectClass::FilesystemSpace, "filesystem-space", "Filesystem space", 0},
    {ObjectClass::FilesystemInodes, "filesystem-inodes", "Filesystem inodes", 0},
    {ObjectClass::FilesystemHealth, "filesystem-health", "Filesystem health", 0},
    {ObjectClass::NetworkLink, "network-link", "Network links", 0},
    {ObjectClass::NetworkBond, "network-bond", "Network bonds", 0},
    {ObjectClass::Process, "process", "Processes", 0},
    {ObjectClass::ServiceUnit, "service-unit", "Services", 0},
    {ObjectClass::HealthSource, "health-source", "Health sources", 0},
};
static_assert(std::ranges::is_sorted(kClasses, std::ranges::less_equal{}, &ClassRow::objectClass));

template <typename Value>
struct WordRow {
  Value value;
  std::string_view word;
};

constexpr WordRow<Question> kQuestions[] = {
    {Question::Count, "count"},
    {Question::State, "state"},
    {Question::Name, "name"},
    {Question::ReadingText, "reading"},
    {Question::Value, "value"},
    {Question::CustomerServiceable, "customer-serviceable"},
    {Question::Redundancy, "redundancy"},
    {Question::Confirm, "confirm"},
    {Question::Quality, "quality"},
    {Question::Reason, "reason"},
    {Question::Age, "age"},
    {Question::ClassName, "class-name"},
    {Question::StateAbove, "state-above"},
    {Question::StateBelow, "state-below"},
    {Question::Advice, "advice"},
};

constexpr WordRow<Condition> kConditions[] = {
    {Condition::Good, "good"},
    {Condition::Warning, "warning"},
    {Condition::Critical, "critical"},
};

constexpr WordRow<Quality> kQualities[] = {
    {Quality::Good, "good"},
    {Quality::Late, "late"},
    {Quality::SensorFault, "sensor fault"},
    {Quality::Implausible, "implausible"},
    {Quality::Inactive, "inactive"},
    {Quality::Lost, "lost"},
};

constexpr WordRow<RedundancyState> kRedundancies[] = {
    {RedundancyState::None, "none"},
    {RedundancyState::Full, "full"},
    {RedundancyState::Reduced, "reduced"},
    {RedundancyState::Insufficient, "insufficient"},
};

constexpr WordRow<Unit> kUnits[] = {
    {Unit::None, ""},     {Unit::Celsius, "°C"},  {Unit::RevolutionsPerMinute, "RPM"},
    {Unit::Volt, "V"},    {Unit::Ampere, "A"},    {Unit::Watt, "W"},
    {Unit::Percent, "%"}, {Unit::Byte, "B"},      {Unit::BitPerSecond, "bit/s"},
    {Unit::Second, "s"},  {Unit::Count, "count"},
};

template <typename Value, std::size_t size>
std::string_view Word(const WordRow<Value> (&rows)[size], Value value) {
  const auto* row = std::ranges::find(rows, value, &WordRow<Value>::value);
  return row == std::end(rows) ? std::string_view{} : row->word;
}

template <typename Value, std::size_t size>
std::optional<Value> Find(const WordRow<Value> (&rows)[size], std::string_view word) {
  const auto* row = std::ranges::find(rows, word, &WordRow<Value>::word);
  return row == std::end(rows) ? std::nullopt : std::optional(row->value);
}

}  // namespace

std::span<const ClassRow> Classes() {
  return kClasses;
}

const ClassRow* FindClass(std::uint32_t number) {
  const auto* row = std::ranges::find(
      kClasses, number, [](const ClassRow& candidate) { return std::uint32_t(candidate.objectClass); });
  return row == std::end(kClasses) ? nullptr : row;
}

const ClassRow* FindClass(std::string_view word) {
  const auto* row = std::ranges::find(kClasses, word, &ClassRow::word);
  return row == std::end(kClasses) ? nullptr : row;
}

const ClassRow& RowOf(ObjectClass objectClass) {
  const ClassRow* row = FindClass(std::uint32_t(objectClass));
  if (row == nullptr) {
    throw std::invalid_argument("a class of objects that the numbering does not know");
  }
  return *row;
}

std::optional<Question> FindQuestion(std::uint32_t number) {
  const auto* row = std::ranges::find(
      kQuestions, number, [](const WordRow<Question>& candidate) { return std::uint32_t(candidate.value); });
  return row == std::end(kQuestions) ? std::nullopt : std::optional(row->value);
}

std::optional<Question> FindQuestion(std::string_view word) {
  return Find(kQuestions, word);
}
std::string_view WordOf(Question question) {
  return Word(kQuestions, question);
}

RawState RawStateOf(const Reading& reading) {
  switch (reading.quality) {
    case Quality::Good:
      return reading.condition == Condition::Good      ? RawState::Good
             : reading.condition == Condition::Warning ? RawState::Warning
                                                       : RawState::Failed;
    case Quality::SensorFault:
      return RawState::SensorFault;
    case Quality::Implausible:
      return RawState::Implausible;
    case Quality::Inactive:
      return RawState::Inactive;
    case Quality::Lost:
      return RawState::Lost;
    case Quality::Late:
      break;
  }
  return RawState::Late;
}

RedundancyState RedundancyStateOf(const Reading& reading) {
  if (!reading.redundancy) {
    return RedundancyState::None;
  }
  const Redundancy& group = *reading.redundancy;
  if (group.present >= group.members) {
    return RedundancyState::Full;
  }
  return group.present >= group.needed ? RedundancyState::Reduced : RedundancyState::Insufficient;
}

std::string_view WordOf(Condition condition) {
  return Word(kConditions, condition);
}
std::string_view WordOf(Quality quality) {
  return Word(kQualities, quality);
}
std::string_view WordOf(RedundancyState state) {
  return Word(kRedundancies, state);
}
std::optional<Condition> FindCondition(std::string_view word) {
  return Find(kConditions, word);
}
std::optional<Quality> FindQuality(std::string_view word) {
  return Find(kQualities, word);
}
std::string_view SymbolOf(Unit unit) {
  return Word(kUnits, unit);
}
std::optional<Unit> FindUnit(std::string_view symbol) {
  return Find(kUnits, symbol);
}

}  // namespace emstatus::host
