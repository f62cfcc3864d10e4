#include "host/providers/ProcessorProvider.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

const std::string kFolder = "/sys/devices/system/cpu/";

std::string CpuFolder(std::uint32_t cpu) {
  return kFolder + "cpu" + std::to_string(cpu);
}

}  // namespace

ProcessorProvider::ProcessorProvider(std::unique_ptr<SystemFiles> files) : files_(std::move(files)) {}

std::vector<Reading> ProcessorProvider::Read(const ReadContext& context) {
  const std::vector<std::uint32_t> onlineList = ReadList("online");
  const std::set<std::uint32_t> online(onlineList.begin(), onlineList.end());
  std::vector<std::uint32_t> present = ReadList("present");
  if (present.empty()) {
    present = onlineList;
  }
  const std::string threads = files_->ReadAttribute(kFolder + "smt/control").value;
  const bool isOneThreadACore = threads == "off" || threads == "forceoff";
  std::map<std::uint32_t, PackageFacts> packages;
  for (const std::uint32_t cpu : present) {
    if (online.contains(cpu)) {
      Place(cpu);
    }
  }
  std::set<std::uint32_t> inUse;
  for (const auto& [cpu, package] : packageOf_) {
    inUse.insert(package);
  }
  for (const std::uint32_t cpu : present) {
    // One that never was online says nowhere where it sits.
    const auto place = packageOf_.find(cpu);
    if (place == packageOf_.end() && inUse.size() > 1) {
      ++packages[*inUse.begin()].unplaced;
      continue;
    }
    const std::uint32_t number = place != packageOf_.end() ? place->second
                                 : inUse.empty()           ? 0
                                                           : *inUse.begin();
    PackageFacts& package = packages[number];
    package.number = number;
    (online.contains(cpu) ? package.online : package.offline).insert(cpu);
    const auto core = coreOf_.find(cpu);
    if (isOneThreadACore && !online.contains(cpu) && core != coreOf_.end() && core->second != cpu) {
      package.switchedOff.insert(cpu);
    }
  }
  std::vector<Reading> readings;
  for (auto& [number, package] : packages) {
    AddThrottling(package);
    readings.push_back(JudgePackage(package, memories_[number]));
    if (auto throttle = JudgeThrottle(package, memories_[number], context.now)) {
      readings.push_back(std::move(*throttle));
    }
  }
  return readings;
}

std::vector<std::uint32_t> ProcessorProvider::ReadList(const char* name) {
  const FileResult<std::string> text = files_->ReadText(kFolder + name, 1U << 16);
  if (!text && IsGone(text.error)) {
    return {};
  }
  auto numbers = text ? ParseRangeList(text.value) : std::nullopt;
  if (!numbers) {
    throw std::runtime_error(kFolder + name + " tells no list of processors");
  }
  return std::move(*numbers);
}

void ProcessorProvider::Place(std::uint32_t cpu) {
  if (packageOf_.contains(cpu)) {
    return;
  }
  const std::string topology = CpuFolder(cpu) + "/topology/";
  const FileResult<std::string> package = files_->ReadAttribute(topology + "physical_package_id");
  const auto number = package ? ParseInteger(package.value) : std::nullopt;
  // Some virtual machines say -1.
  packageOf_[cpu] = number && *number > 0 ? static_cast<std::uint32_t>(*number) : 0;
  const FileResult<std::string> siblings = files_->ReadAttribute(topology + "thread_siblings_list");
  const auto list = siblings ? ParseRangeList(siblings.value) : std::nullopt;
  coreOf_[cpu] = list && !list->empty() ? list->front() : cpu;
}

ProcessorProvider::Counters ProcessorProvider::ReadCounters(std::uint32_t cpu) {
  const auto number = [&](const char* name) {
    const FileResult<std::string> text = files_->ReadAttribute(CpuFolder(cpu) + "/thermal_throttle/" + name);
    return text ? ParseUnsigned(text.value) : std::nullopt;
  };
  return {number("core_throttle_count"), number("package_throttle_count")};
}

void ProcessorProvider::AddThrottling(PackageFacts& package) {
  for (const std::uint32_t cpu : package.online) {
    const Counters counters = ReadCounters(cpu);
    if (counters.core || counters.package) {
      std::uint64_t& core = package.throttledCores[coreOf_[cpu]];
      core = std::max(core, counters.core.value_or(0));
      package.throttled = std::max(package.throttled.value_or(0), counters.package.value_or(0));
    }
  }
}

bool ProcessorProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  const auto number = NumberAfter(id, "package");
  if (objectClass != ObjectClass::Processor || !number) {
    return false;
  }
  return memories_.erase(*number) > 0;
}

}  // namespace emstatus::host
