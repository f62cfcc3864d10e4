#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/FilesystemJudge.h"
#include "host/providers/Provider.h"

namespace emstatus::host {

/// Room, inodes and health of the mounted filesystems. Each is asked on a lane of its own, since asking a
/// dead network mount never returns.
class FilesystemProvider final : public Provider {
 public:
  /// `named`: mount points that are told although they are on the network or pseudo filesystems, and that
  /// must be mounted.
  FilesystemProvider(const FilesFactory& makeFiles, const std::vector<std::string>& named,
                     UseLimits limits = {}, std::chrono::milliseconds patience = ReadLanes::kPatience);

  std::string_view Name() const override { return "filesystems"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Takes the present state of a filesystem (read-only, errors recorded so far) for the intended one.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;

 private:
  struct Sample {
    FileResult<FilesystemRoom> room;
    std::optional<FilesystemErrors> errors;
  };
  using Answer = DeviceAnswer<Sample>;

  void TellHealth(std::vector<Reading>& readings, const Mount& mount, const Answer& answer,
                  const ReadContext& context);
  void TellRoom(std::vector<Reading>& readings, const Mount& mount, const Answer& answer,
                const ReadContext& context);
  void TellNotMounted(std::vector<Reading>& readings, const std::vector<Mount>& told) const;

  // Constant
  const std::vector<std::string> named_;
  const UseLimits limits_;
  // The provider's thread
  std::unique_ptr<SystemFiles> files_;
  DeviceReads<Sample> reads_;
  std::map<std::string, FilesystemMemory> memories_;
};

}  // namespace emstatus::host
