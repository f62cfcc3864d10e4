#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/providers/HwmonChannel.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// What kind of device a chip sits in; reading some of them costs more than others.
enum class HwmonKind : std::uint8_t { Board, Nvme, Sata };

/// What is found out about a chip by one look at its folder. All paths are real ones, so that they never lead
/// to another chip when the kernel numbers them anew.
struct HwmonLook {
  /// The chip's own folder (".../hwmon/hwmon2"); empty when there is none.
  std::string chipFolder;
  /// Where its attributes are: its own folder or, with older drivers, that of its device.
  std::string folder;
  std::string deviceFolder;
  /// The file that holds its name; empty when it has none.
  std::string nameFile;
  std::string name;
  HwmonKind kind = HwmonKind::Board;
  /// The device that it sits on ("0-0019", "coretemp.0", "sda"); empty for none.
  std::string device;
  /// Names it for ever, as far as it can tell alone.
  std::string identity;
  /// Empty for what is no chip of the wanted kind, or one of a battery that is not the machine's.
  HwmonChannels channels;
};

/// Whether a file name is that of a chip ("hwmon2"). [any thread]
bool IsHwmonName(std::string_view name);

/// Looks at the folder of a chip: one of the class, one below the devices that is not linked from there, or a
/// device that holds attributes itself. Reads no sensor. [any thread]
HwmonLook LookAtChip(SystemFiles& files, const std::string& folder, HwmonKind wanted);

}  // namespace emstatus::host
