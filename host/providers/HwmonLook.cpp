#include "host/providers/HwmonLook.h"

#include <algorithm>

#include "host/providers/KernelText.h"

namespace emstatus::host {
namespace {

HwmonKind KindOf(const std::string& name) {
  if (name == "nvme") {
    return HwmonKind::Nvme;
  }
  return name == "drivetemp" ? HwmonKind::Sata : HwmonKind::Board;
}

std::string Text(SystemFiles& files, const std::string& path) {
  const FileResult<std::string> text = files.ReadAttribute(path);
  return text ? std::string(Trimmed(text.value)) : "";
}

HwmonChannels ChannelsOf(SystemFiles& files, const std::string& folder) {
  const FileResult<std::vector<std::string>> names = files.List(folder);
  return names ? ChannelsIn(names.value) : HwmonChannels{};
}

// The folder of the device, told by the path of a chip without a link to it (".../coretemp.0/hwmon/hwmon1").
std::string DeviceInPath(std::string folder) {
  if (!IsHwmonName(BaseName(folder))) {
    return folder;
  }
  folder.resize(folder.rfind('/'));
  if (folder.ends_with("/hwmon")) {
    folder.resize(folder.rfind('/'));
  }
  return folder.ends_with("/virtual") || folder.starts_with("/sys/class") ? "" : folder;
}

std::string NvmeController(SystemFiles& files, const std::string& deviceFolder) {
  // Some kernels hang the chip on the PCI device.
  for (const std::string& name : files.List(deviceFolder + "/nvme").value) {
    return deviceFolder + "/nvme/" + name;
  }
  return deviceFolder;
}

std::string DeviceName(SystemFiles& files, const HwmonLook& look) {
  if (look.kind == HwmonKind::Sata) {
    const FileResult<std::vector<std::string>> disks = files.List(look.deviceFolder + "/block");
    if (disks && !disks.value.empty()) {
      return disks.value.front();
    }
  }
  // A copy that was made without links has the device itself in the place of the link to it.
  return look.deviceFolder == look.chipFolder + "/device" ? "" : std::string(BaseName(look.deviceFolder));
}

std::string IdentityOf(SystemFiles& files, const HwmonLook& look) {
  if (look.kind != HwmonKind::Board) {
    for (const char* attribute : {"/serial", "/wwid", "/device/serial", "/device/wwid"}) {
      if (const std::string text = Text(files, look.deviceFolder + attribute); !text.empty()) {
        // A drive with two ports has two controllers.
        const std::string controller = Text(files, look.deviceFolder + "/cntlid");
        return look.name + "-" + text + (controller.empty() ? "" : "-" + controller);
      }
    }
  }
  if (look.name.empty() && look.device.empty()) {
    return std::string(BaseName(look.chipFolder));
  }
  return look.name + (look.name.empty() || look.device.empty() ? "" : "-") + look.device;
}

bool FeedsADevice(SystemFiles& files, const HwmonLook& look) {
  return look.deviceFolder.find("/power_supply/") != std::string::npos &&
         Text(files, look.deviceFolder + "/scope") == "Device";
}

}  // namespace

bool IsHwmonName(std::string_view name) {
  return NumberAfter(name, "hwmon").has_value();
}

HwmonLook LookAtChip(SystemFiles& files, const std::string& folder, HwmonKind wanted) {
  HwmonLook look;
  look.chipFolder = files.RealPath(folder).value;
  if (look.chipFolder.empty()) {
    return look;
  }
  const FileResult<std::string> device = files.RealPath(look.chipFolder + "/device");
  look.deviceFolder = device ? device.value : DeviceInPath(look.chipFolder);
  look.folder = look.chipFolder;
  look.channels = ChannelsOf(files, look.folder);
  if (look.channels.empty() && device) {
    look.folder = look.deviceFolder;
    look.channels = ChannelsOf(files, look.folder);
  }
  if (look.channels.empty()) {
    return look;
  }
  for (const std::string& place : {look.chipFolder, look.deviceFolder}) {
    if (look.name.empty() && !place.empty()) {
      look.nameFile = place + "/name";
      look.name = Text(files, look.nameFile);
    }
  }
  look.kind = KindOf(look.name);
  if (look.kind != wanted || FeedsADevice(files, look)) {
    look.channels.clear();
    return look;
  }
  if (look.kind == HwmonKind::Nvme) {
    look.deviceFolder = NvmeController(files, look.deviceFolder);
  }
  look.device = DeviceName(files, look);
  look.identity = IdentityOf(files, look);
  return look;
}

}  // namespace emstatus::host
