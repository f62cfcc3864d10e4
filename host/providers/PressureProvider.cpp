#include "host/providers/PressureProvider.h"

#include <cerrno>
#include <string>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

struct Resource {
  ObjectClass objectClass;
  const char* id;
  const char* name;
  const char* path;
};

constexpr Resource kResources[] = {
    {ObjectClass::CpuPressure, "cpu", "Processor pressure", "/proc/pressure/cpu"},
    {ObjectClass::MemoryPressure, "memory", "Memory pressure", "/proc/pressure/memory"},
    {ObjectClass::IoPressure, "io", "I/O pressure", "/proc/pressure/io"},
};

// A kernel that could measure pressure but was told not to is one without it.
bool IsAbsent(int error) {
  return IsGone(error) || error == EOPNOTSUPP;
}

void Judge(Reading& reading, const Pressure& pressure, const std::optional<double>& limit) {
  // Some task always runs on a busy processor, so the whole machine never waits for one: "some" is what tells
  // there.
  const std::optional<double>& share = limit ? pressure.full : pressure.some;
  if (!share || *share < 0 || *share > 100) {
    SetUnknown(reading, Quality::Implausible, "no share of the last minute between 0 and 100 % is told");
    return;
  }
  reading.quality = Quality::Good;
  reading.measurement = Measurement{*share, Unit::Percent, {}};
  reading.measurement->limits.upperWarning = limit;
  if (limit && *share >= *limit) {
    reading.condition = Condition::Warning;
    reading.reason =
        Format("all work waited for %.1f %% of the last minute, less than %.0f %% expected", *share, *limit);
    reading.advice = "find what loads the machine (memory use, disk traffic) and limit it";
  }
}

}  // namespace

Pressure ParsePressure(std::string_view text) {
  Pressure pressure;
  for (const std::string_view line : Lines(text)) {
    const std::vector<std::string_view> words = Words(line);
    for (const std::string_view word : words) {
      if (word.starts_with("avg60=") && (words[0] == "some" || words[0] == "full")) {
        (words[0] == "some" ? pressure.some : pressure.full) = ParseDecimal(word.substr(6));
      }
    }
  }
  return pressure;
}

PressureProvider::PressureProvider(std::unique_ptr<SystemFiles> files, PressureLimits limits)
    : files_(std::move(files)), limits_(limits) {}

std::vector<Reading> PressureProvider::Read(const ReadContext&) {
  std::vector<Reading> readings;
  for (const Resource& resource : kResources) {
    const FileResult<std::string> text = files_->ReadText(resource.path, 4096);
    if (IsAbsent(text.error)) {
      continue;
    }
    Reading reading;
    reading.objectClass = resource.objectClass;
    reading.id = resource.id;
    reading.name = resource.name;
    reading.customerServiceable = true;
    if (!text) {
      SetUnread(reading, resource.path, text.error);
    } else if (resource.objectClass == ObjectClass::CpuPressure) {
      Judge(reading, ParsePressure(text.value), std::nullopt);
    } else {
      Judge(reading, ParsePressure(text.value),
            resource.objectClass == ObjectClass::MemoryPressure ? limits_.memory : limits_.io);
    }
    readings.push_back(std::move(reading));
  }
  return readings;
}

}  // namespace emstatus::host
