#include "host/providers/ProcessorJudge.h"

#include <string>

#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

Reading Described(ObjectClass objectClass, const PackageFacts& package) {
  Reading reading;
  reading.objectClass = objectClass;
  reading.id = Format("package%u", package.number);
  reading.name = Format("CPU %u", package.number);
  reading.quality = Quality::Good;
  return reading;
}

std::string ListText(const std::set<std::uint32_t>& numbers) {
  std::string text;
  std::size_t told = 0;
  for (const std::uint32_t number : numbers) {
    if (++told > 8) {
      return text + ", …";
    }
    text += (text.empty() ? "" : ", ") + std::to_string(number);
  }
  return text;
}

}  // namespace

Reading JudgePackage(const PackageFacts& package, PackageMemory& memory) {
  Reading reading = Described(ObjectClass::Processor, package);
  std::set<std::uint32_t> all = package.offline;
  all.insert(package.online.begin(), package.online.end());
  std::set<std::uint32_t> fallen;
  for (const std::uint32_t cpu : memory.wasOnline) {
    all.insert(cpu);
    if (!package.online.contains(cpu) && !package.switchedOff.contains(cpu)) {
      fallen.insert(cpu);
    }
  }
  memory.wasOnline.insert(package.online.begin(), package.online.end());
  if (package.online.empty() && fallen.empty()) {
    SetUnknown(reading, Quality::Inactive, "all its logical processors are switched off");
    return reading;
  }
  reading.measurement = Measurement{static_cast<double>(package.online.size()), Unit::Count, {}};
  const std::string count = Format("%zu of %zu logical processors online", package.online.size(), all.size());
  if (!fallen.empty()) {
    reading.condition = package.online.empty() ? Condition::Critical : Condition::Warning;
    reading.reason = count + "; went offline: " + ListText(fallen);
    reading.advice =
        "look for machine checks in the kernel log; switch them on again through "
        "/sys/devices/system/cpu/cpuN/online, or confirm that they are to be off";
  } else if (all.size() > package.online.size()) {
    reading.reason = count + ", the others are switched off";
  } else if (package.unplaced > 0) {
    reading.reason = Format("%zu more logical processors of the machine are switched off", package.unplaced);
  }
  return reading;
}

std::optional<Reading> JudgeThrottle(const PackageFacts& package, PackageMemory& memory,
                                     std::chrono::steady_clock::time_point now) {
  memory.isThrottlingCounted = memory.isThrottlingCounted || package.throttled;
  if (!memory.isThrottlingCounted) {
    return std::nullopt;
  }
  Reading reading = Described(ObjectClass::ProcessorThrottle, package);
  if (!package.throttled) {
    SetUnknown(reading, Quality::Inactive, "not counted while none of its logical processors is online");
    return reading;
  }
  // What was counted for a core is shown again, and no news, when it comes back online.
  std::uint64_t recent = memory.throttled.Update(package.throttled, now);
  for (const auto& [core, count] : package.throttledCores) {
    memory.throttledCores.emplace(core, RecentCount(kThrottleWindow));
  }
  for (auto& [core, counter] : memory.throttledCores) {
    const auto count = package.throttledCores.find(core);
    recent += counter.Update(
        count == package.throttledCores.end() ? std::nullopt : std::optional(count->second), now);
  }
  reading.measurement = Measurement{static_cast<double>(recent), Unit::Count, {}};
  reading.measurement->limits.upperWarning = 1;
  if (recent > 0) {
    reading.condition = Condition::Warning;
    reading.reason =
        Format("slowed down by heat %llu times in the last %lld min, 0 expected",
               static_cast<unsigned long long>(recent), static_cast<long long>(kThrottleWindow.count()));
    reading.advice = "look at the fans, the air flow and the temperature of the room";
    reading.customerServiceable = true;
  }
  return reading;
}

}  // namespace emstatus::host
