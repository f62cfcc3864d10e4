#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/MdJudge.h"
#include "host/providers/Provider.h"

namespace emstatus::host {

/// Software RAID arrays and their members. The kernel tells of changes, so they are seen at once. The disks
/// of a container are told with the arrays in it, and there once.
class MdProvider final : public Provider {
 public:
  explicit MdProvider(const FilesFactory& makeFiles,
                      std::chrono::milliseconds patience = ReadLanes::kPatience);

  std::string_view Name() const override { return "md arrays"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Takes the read errors that a member has had so far for known, and the spares that an array has now for
  /// all that it needs.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;
  void Watch(std::vector<pollfd>& descriptors) override;

 private:
  /// Descriptors that are closed with their last owner.
  using Watched = std::vector<std::shared_ptr<const int>>;
  struct Sample {
    MdArray array;
    Watched watched;
  };

  static Sample TakeSample(SystemFiles& files, const std::string& name);
  static MdMember TakeMember(SystemFiles& files, const std::string& folder, const std::string& name);
  static void AddWatched(SystemFiles& files, const std::string& path, Watched& watched);
  std::map<std::string, DeviceReads<Sample>::Take> Takes();
  std::vector<Reading> Tell(const MdArray& array, std::chrono::steady_clock::time_point now);

  const std::unique_ptr<SystemFiles> files_;
  DeviceReads<Sample> reads_;
  std::map<std::string, MdMemory> memories_;
  /// The members of the arrays in each container.
  std::map<std::string, std::set<std::string>, std::less<>> usedOf_;
};

}  // namespace emstatus::host
