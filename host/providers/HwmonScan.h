#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/providers/HwmonChannel.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// What kind of device a chip sits in; reading some of them costs more than others.
enum class HwmonKind : std::uint8_t { Board, Nvme, Sata };

/// A chip with sensors.
struct HwmonChip {
  HwmonKind kind = HwmonKind::Board;
  /// Where its attributes are.
  std::string folder;
  /// What it calls itself; empty when it does not.
  std::string name;
  /// The device that it sits on ("0-0019", "coretemp.0", "sda"); empty for none.
  std::string device;
  /// Names it for ever, unique among the chips.
  std::string id;
  /// For people, unique among the chips.
  std::string title;
  HwmonChannels channels;
};

/// Finds the chips of a machine: those of the class, with their attributes in their own folder or in that of
/// their device, and those that stand under the devices without being linked from the class. Chips in which
/// the kernel only mirrors thermal zones are left out.
class HwmonScan {
 public:
  explicit HwmonScan(SystemFiles& files) : files_(files) {}

  /// The chips that there are now. `searchDevices`: look through all devices too, which takes long.
  std::vector<HwmonChip> Run(bool searchDevices);

 private:
  void AddClassChip(const std::string& folder);
  void AddChip(const std::string& folder, const std::string& deviceFolder, HwmonChannels channels);
  void SearchDevices();
  void SearchFolder(const std::string& folder, std::vector<std::string>& further);
  bool MirrorsThermalZone(const HwmonChip& chip, const std::string& deviceFolder);
  std::string DeviceName(const HwmonChip& chip, const std::string& deviceFolder);
  std::string IdentityOf(const HwmonChip& chip, const std::string& deviceFolder);
  HwmonChannels ChannelsOf(const std::string& folder);
  std::string Text(const std::string& path);

  SystemFiles& files_;
  // What the present run has found
  std::vector<HwmonChip> chips_;
  /// Real paths of the folders of the class's chips and of their devices, of the devices whose attributes
  /// belong to a chip of the class, and the names of the chips of the class ("hwmon2").
  std::set<std::string> folders_;
  std::set<std::string> borrowed_;
  std::set<std::string> classNames_;
  // Kept between runs
  std::vector<std::string> unlinked_;
  std::map<std::string, std::size_t> zones_;
};

}  // namespace emstatus::host
