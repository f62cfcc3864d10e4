#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/HwmonLook.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// A chip with sensors.
struct HwmonChip {
  HwmonLook look;
  /// Names it for ever, unique among the chips.
  std::string id;
  /// For people, unique among the chips.
  std::string title;
  /// Set for one of which nothing is known: since when it owes an answer.
  std::optional<std::chrono::steady_clock::time_point> silentSince;
};

/// Finds the chips of one kind of a machine: those of the class, with their attributes in their own folder or
/// in that of their device, and those that stand under the devices without being linked from the class. Chips
/// in which the kernel only mirrors thermal zones are left out. Each folder is looked at on a lane of its
/// own, and so is the search; what does not answer is waited for a moment and told by a later run.
class HwmonScan {
 public:
  using Clock = std::chrono::steady_clock;

  /// `patience`: how long a run waits for a folder, and a few times of it for the search through all devices.
  HwmonScan(const FilesFactory& makeFiles, HwmonKind kind, std::chrono::milliseconds patience);

  /// The chips that there are now, by the names in the class. `searchDevices`: look through all devices too,
  /// which takes long.
  std::vector<HwmonChip> Run(const std::vector<std::string>& classNames, bool searchDevices,
                             Clock::time_point now);

  /// Whether something still owes an answer to the last run.
  bool IsWaiting() const { return isWaiting_; }

 private:
  using Looks = DeviceReads<HwmonLook>;

  std::map<std::string, DeviceAnswer<HwmonLook>> LookAt(Looks& looks, const std::vector<std::string>& folders,
                                                        Clock::time_point now);
  void ReadZones(Clock::time_point now);
  std::vector<std::string> Unlinked(bool searchDevices, Clock::time_point now);
  void Add(const HwmonLook& look);
  /// Whether it is already there from the class: a copy may hold folders in the place of the class's links.
  bool IsCopied(const HwmonLook& look) const;
  bool MirrorsThermalZone(const HwmonLook& look) const;

  const HwmonKind kind_;
  const std::unique_ptr<SystemFiles> files_;
  Looks classLooks_;
  Looks otherLooks_;
  DeviceReads<std::string> zoneTypes_;
  DeviceReads<std::vector<std::string>> search_;
  // Of the present run
  std::vector<HwmonChip> chips_;
  /// Folders of the class's chips and of their devices.
  std::set<std::string> taken_;
  /// Names of the class's chips that do not answer, so that it is not known where they lead.
  std::set<std::string> silentNames_;
  /// How many thermal zones there are for each name of a mirroring chip.
  std::map<std::string, std::size_t> zones_;
  bool isWaiting_ = false;
};

}  // namespace emstatus::host
