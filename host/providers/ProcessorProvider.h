#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "host/providers/ProcessorJudge.h"
#include "host/providers/Provider.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// Processor packages: their logical processors, and how often heat slowed them down.
class ProcessorProvider final : public Provider {
 public:
  explicit ProcessorProvider(std::unique_ptr<SystemFiles> files);

  std::string_view Name() const override { return "processors"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Takes the processors that are offline for intended.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;

 private:
  struct Counters {
    std::optional<std::uint64_t> core;
    std::optional<std::uint64_t> package;
  };

  std::vector<std::uint32_t> ReadList(const char* name);
  void Place(std::uint32_t cpu);
  Counters ReadCounters(std::uint32_t cpu);
  void AddThrottling(PackageFacts& package);

  const std::unique_ptr<SystemFiles> files_;
  /// The package of each logical processor: what is offline no longer tells it.
  std::map<std::uint32_t, std::uint32_t> packageOf_;
  /// The core of each logical processor, by its first sibling: siblings show one counter.
  std::map<std::uint32_t, std::uint32_t> coreOf_;
  std::map<std::uint32_t, PackageMemory> memories_;
};

}  // namespace emstatus::host
