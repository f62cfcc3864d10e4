#include "host/configcheck/SourceRhythm.h"

#include <algorithm>
#include <array>

namespace emstatus::host {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

constexpr std::string_view kDisks = "disks";
constexpr std::string_view kSmart = "SMART";

constexpr SourceRhythm kSources[] = {
    {"sensors", seconds(5), seconds(15)},
    {"nvme sensors", minutes(1), minutes(3)},
    {"sata sensors", minutes(10), minutes(30)},
    {"thermal zones", seconds(10), seconds(30)},
    {"power supplies", seconds(10), seconds(30)},
    {"processors", seconds(10), seconds(30)},
    {"memory modules", seconds(10), seconds(30)},
    {"memory", seconds(2), seconds(6)},
    {"pressure", seconds(5), seconds(15)},
    {"nvme controllers", seconds(5), seconds(15)},
    {kDisks, seconds(10), seconds(30)},
    // A disk's own health, which the disks' source asks more seldom.
    {kSmart, minutes(30), seconds(30)},
    {"md arrays", seconds(10), seconds(30)},
    {"filesystems", seconds(10), seconds(30)},
    {"network", seconds(2), seconds(6)},
    {"processes", seconds(5), seconds(15)},
    {"systemd units", seconds(10), seconds(30)},
};

struct SourcesOfClass {
  ObjectClass objectClass;
  std::array<std::string_view, 2> names;
};

/// A health source stands for any source, so its class is not listed.
constexpr SourcesOfClass kClassSources[] = {
    {ObjectClass::Temperature, {"sensors", "power supplies"}},
    {ObjectClass::Fan, {"sensors"}},
    {ObjectClass::Voltage, {"sensors"}},
    {ObjectClass::Current, {"sensors"}},
    {ObjectClass::Power, {"sensors"}},
    {ObjectClass::Humidity, {"sensors"}},
    {ObjectClass::Intrusion, {"sensors"}},
    {ObjectClass::ThermalZone, {"thermal zones"}},
    {ObjectClass::PowerSupply, {"power supplies"}},
    {ObjectClass::Battery, {"power supplies"}},
    {ObjectClass::Processor, {"processors"}},
    {ObjectClass::ProcessorThrottle, {"processors"}},
    {ObjectClass::CpuPressure, {"pressure"}},
    {ObjectClass::MemoryModule, {"memory modules"}},
    {ObjectClass::MemoryUse, {"memory"}},
    {ObjectClass::SwapUse, {"memory"}},
    {ObjectClass::MemoryPressure, {"pressure"}},
    {ObjectClass::Disk, {kDisks, kSmart}},
    {ObjectClass::DiskTemperature, {"nvme sensors", "sata sensors"}},
    {ObjectClass::RaidArray, {"md arrays"}},
    {ObjectClass::RaidMember, {"md arrays"}},
    {ObjectClass::StorageController, {"nvme controllers"}},
    {ObjectClass::IoPressure, {"pressure"}},
    {ObjectClass::FilesystemSpace, {"filesystems"}},
    {ObjectClass::FilesystemInodes, {"filesystems"}},
    {ObjectClass::FilesystemHealth, {"filesystems"}},
    {ObjectClass::NetworkLink, {"network"}},
    {ObjectClass::NetworkBond, {"network"}},
    {ObjectClass::Process, {"processes"}},
    {ObjectClass::ServiceUnit, {"systemd units"}},
};

void TakeSlower(ClassRhythm& rhythm, const SourceRhythm& source) {
  rhythm.interval = std::max(rhythm.interval, source.interval);
  rhythm.lateAfter = std::max(rhythm.lateAfter, source.lateAfter);
}

}  // namespace

std::span<const SourceRhythm> SourceRhythms() {
  return kSources;
}

ClassRhythm RhythmOfClass(ObjectClass objectClass) {
  ClassRhythm rhythm;
  const auto* row = std::ranges::find(kClassSources, objectClass, &SourcesOfClass::objectClass);
  if (row == std::end(kClassSources)) {
    rhythm.sources = "any source";
    for (const SourceRhythm& source : kSources) {
      if (source.name != kSmart) {
        TakeSlower(rhythm, source);
      }
    }
    return rhythm;
  }
  for (const std::string_view name : row->names) {
    const auto* source = std::ranges::find(kSources, name, &SourceRhythm::name);
    if (source != std::end(kSources)) {
      rhythm.sources += (rhythm.sources.empty() ? "" : ", ") + std::string(name);
      TakeSlower(rhythm, *source);
    }
  }
  return rhythm;
}

}  // namespace emstatus::host
