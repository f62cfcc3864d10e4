#include "host/providers/ProcessorJudge.h"

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
  std::set<std::uint32_t> fallen;
  for (const std::uint32_t cpu : package.offline) {
    if (memory.wasOnline.contains(cpu)) {
      fallen.insert(cpu);
    }
  }
  memory.wasOnline.insert(package.online.begin(), package.online.end());
  if (package.online.empty()) {
    reading.quality = Quality::Inactive;
    reading.reason = "all its logical processors are switched off";
    return reading;
  }
  const std::size_t all = package.online.size() + package.offline.size();
  reading.measurement = Measurement{static_cast<double>(package.online.size()), Unit::Count, {}};
  if (!fallen.empty()) {
    reading.condition = Condition::Warning;
    reading.reason =
        Format("%zu of %zu logical processors online; went offline: ", package.online.size(), all) +
        ListText(fallen);
    reading.advice =
        "look for machine checks in the kernel log; switch them on again through "
        "/sys/devices/system/cpu/cpuN/online";
  } else if (!package.offline.empty()) {
    reading.reason = Format("%zu of %zu logical processors online, the others are switched off",
                            package.online.size(), all);
  }
  return reading;
}

std::optional<Reading> JudgeThrottle(const PackageFacts& package, PackageMemory& memory,
                                     std::chrono::steady_clock::time_point now) {
  if (!package.throttled) {
    return std::nullopt;
  }
  const std::uint64_t count = *package.throttled;
  // Counters fall when a processor goes offline; nothing is known of what was counted meanwhile.
  if (memory.lastThrottled && count > *memory.lastThrottled) {
    memory.recent.emplace_back(now, count - *memory.lastThrottled);
  }
  memory.lastThrottled = count;
  while (!memory.recent.empty() && now - memory.recent.front().first >= kThrottleWindow) {
    memory.recent.pop_front();
  }
  std::uint64_t recent = 0;
  for (const auto& [time, number] : memory.recent) {
    recent += number;
  }
  Reading reading = Described(ObjectClass::ProcessorThrottle, package);
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
