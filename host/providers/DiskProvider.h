#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/DiskJudge.h"
#include "host/providers/Provider.h"
#include "host/providers/SmartHealth.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// How often drives are asked for their own health.
inline constexpr std::chrono::minutes kSmartInterval{30};
/// A drive that owes an answer for so long hangs.
inline constexpr std::chrono::minutes kSmartLateAfter = 3 * kSmartInterval;

/// Whole disks: what the kernel knows of them and, seldom, what they say of themselves. A sleeping disk is
/// not woken.
class DiskProvider final : public Provider {
 public:
  /// `smart` null: drives are not asked.
  DiskProvider(const FilesFactory& makeFiles, std::shared_ptr<SmartReader> smart,
               std::chrono::milliseconds patience = ReadLanes::kPatience);

  std::string_view Name() const override { return "disks"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Forgets the failed commands of a disk so far.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;

 private:
  using Answers = std::map<std::string, DeviceAnswer<DiskFacts>>;
  /// What is known of a drive's own health.
  struct Smart {
    std::optional<SmartHealth> health;
    int error = 0;
    /// Since when it owes an answer.
    std::optional<DiskMemory::Clock::time_point> silentSince;
  };

  void AskDrives(const Answers& disks, DiskMemory::Clock::time_point now);
  void AddSmart(Reading& reading, const std::string& name, DiskMemory::Clock::time_point now) const;

  const std::unique_ptr<SystemFiles> files_;
  const std::shared_ptr<SmartReader> smart_;
  DeviceReads<DiskFacts> disks_;
  DeviceReads<FileResult<SmartHealth>> drives_;
  std::optional<DiskMemory::Clock::time_point> askedAt_;
  /// By the disk's name; of a drive that sleeps what it said last.
  std::map<std::string, Smart> healths_;
  /// By the id of the disk's reading.
  std::map<std::string, DiskMemory> memories_;
};

}  // namespace emstatus::host
