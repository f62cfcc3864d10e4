#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/providers/DiskJudge.h"
#include "host/providers/Provider.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// Whole disks, as far as the kernel tells their health without asking them: nothing here wakes a sleeping
/// disk.
class DiskProvider final : public Provider {
 public:
  explicit DiskProvider(std::unique_ptr<SystemFiles> files);

  std::string_view Name() const override { return "disks"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Forgets the failed commands of a disk so far.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;

 private:
  DiskFacts ReadDisk(const std::string& name);
  std::string IdentityOf(const std::string& folder);

  const std::unique_ptr<SystemFiles> files_;
  /// By the id of the disk's reading.
  std::map<std::string, DiskMemory> memories_;
};

}  // namespace emstatus::host
