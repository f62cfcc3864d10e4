#include "host/providers/HwmonScan.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ThermalZoneNames.h"

namespace emstatus::host {
namespace {

constexpr char kClass[] = "/sys/class/hwmon";
constexpr std::size_t kMostFolders = 100000;

HwmonKind KindOf(const std::string& name) {
  if (name == "nvme") {
    return HwmonKind::Nvme;
  }
  return name == "drivetemp" ? HwmonKind::Sata : HwmonKind::Board;
}

// The folder of the device, told by the path of a chip without a link to it (".../coretemp.0/hwmon/hwmon1").
std::string DeviceInPath(const std::string& folder) {
  const std::size_t at = folder.rfind("/hwmon/hwmon");
  const std::string device = at == std::string::npos ? folder : folder.substr(0, at);
  return device.ends_with("/virtual") ? "" : device;
}

bool IsChipName(std::string_view name) {
  return NumberAfter(name, "hwmon").has_value();
}

// Chips that would have the same text get what makes them different behind it.
void MakeDifferent(std::vector<HwmonChip>& chips, std::string HwmonChip::*text, bool byDevice) {
  std::map<std::string, std::size_t> count;
  for (const HwmonChip& chip : chips) {
    ++count[chip.*text];
  }
  for (HwmonChip& chip : chips) {
    if (byDevice && count[chip.*text] > 1 && !chip.device.empty() && chip.device != chip.*text) {
      chip.*text = chip.device.starts_with(chip.*text) ? chip.device : chip.*text + " " + chip.device;
    }
  }
  std::map<std::string, std::size_t> used;
  for (HwmonChip& chip : chips) {
    if (const std::size_t earlier = used[chip.*text]++; earlier > 0) {
      chip.*text += "#" + std::to_string(earlier + 1);
    }
  }
}

}  // namespace

std::vector<HwmonChip> HwmonScan::Run(bool searchDevices) {
  chips_.clear();
  folders_.clear();
  borrowed_.clear();
  classNames_.clear();
  zones_ = CountThermalZoneNames(files_);
  const FileResult<std::vector<std::string>> names = files_.List(kClass);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kClass);
  }
  for (const std::string& name : names.value) {
    AddClassChip(std::string(kClass) + "/" + name);
  }
  if (searchDevices) {
    SearchDevices();
  }
  for (const std::string& folder : unlinked_) {
    const std::string device = IsChipName(BaseName(folder)) ? DeviceInPath(folder) : folder;
    AddChip(folder, device, ChannelsOf(folder));
  }
  MakeDifferent(chips_, &HwmonChip::id, false);
  MakeDifferent(chips_, &HwmonChip::title, true);
  return std::move(chips_);
}

void HwmonScan::AddClassChip(const std::string& folder) {
  const FileResult<std::string> real = files_.RealPath(folder);
  if (!real) {
    return;
  }
  classNames_.emplace(BaseName(folder));
  const std::string deviceLink = folder + "/device";
  const FileResult<std::string> device = files_.RealPath(deviceLink);
  const std::string deviceFolder = device ? device.value : DeviceInPath(real.value);
  folders_.insert(real.value);
  folders_.insert(deviceFolder);
  if (HwmonChannels channels = ChannelsOf(folder); !channels.empty()) {
    AddChip(folder, deviceFolder, std::move(channels));
  } else if (device && borrowed_.insert(deviceFolder).second) {
    AddChip(deviceLink, deviceFolder, ChannelsOf(deviceLink));
  }
}

void HwmonScan::AddChip(const std::string& folder, const std::string& deviceFolder, HwmonChannels channels) {
  if (channels.empty()) {
    return;
  }
  HwmonChip chip;
  chip.folder = folder;
  chip.channels = std::move(channels);
  chip.name = Text(folder + "/name");
  if (chip.name.empty() && !deviceFolder.empty()) {
    chip.name = Text(deviceFolder + "/name");
  }
  chip.kind = KindOf(chip.name);
  if (MirrorsThermalZone(chip, deviceFolder)) {
    return;
  }
  chip.device = DeviceName(chip, deviceFolder);
  chip.id = IdentityOf(chip, deviceFolder);
  const bool isDisk = chip.kind != HwmonKind::Board && !chip.device.empty();
  chip.title = isDisk || chip.name.empty() ? chip.device : chip.name;
  if (chip.title.empty()) {
    chip.title = BaseName(folder);
  }
  chips_.push_back(std::move(chip));
}

bool HwmonScan::MirrorsThermalZone(const HwmonChip& chip, const std::string& deviceFolder) {
  if (deviceFolder.find("/thermal_zone") != std::string::npos) {
    return true;
  }
  const auto zone = zones_.find(chip.name);
  return zone != zones_.end() && chip.channels.size() <= zone->second &&
         std::ranges::all_of(chip.channels, [](const auto& channel) {
           return channel.first.type->objectClass == ObjectClass::Temperature;
         });
}

std::string HwmonScan::DeviceName(const HwmonChip& chip, const std::string& deviceFolder) {
  if (chip.kind == HwmonKind::Sata) {
    const FileResult<std::vector<std::string>> disks = files_.List(deviceFolder + "/block");
    if (disks && !disks.value.empty()) {
      return disks.value.front();
    }
  }
  return std::string(BaseName(deviceFolder));
}

std::string HwmonScan::IdentityOf(const HwmonChip& chip, const std::string& deviceFolder) {
  if (chip.kind != HwmonKind::Board) {
    for (const char* attribute : {"/serial", "/wwid", "/device/serial", "/device/wwid"}) {
      if (const std::string text = Text(deviceFolder + attribute); !text.empty()) {
        return chip.name + "-" + text;
      }
    }
  }
  const std::string device(BaseName(deviceFolder));
  if (chip.name.empty() || device.empty()) {
    return chip.name.empty() && device.empty() ? std::string(BaseName(chip.folder)) : chip.name + device;
  }
  return chip.name + "-" + device;
}

void HwmonScan::SearchDevices() {
  unlinked_.clear();
  std::vector<std::string> further = {"/sys/devices"};
  for (std::size_t done = 0; !further.empty() && done < kMostFolders; ++done) {
    const std::string folder = std::move(further.back());
    further.pop_back();
    SearchFolder(folder, further);
  }
  std::ranges::sort(unlinked_);
}

void HwmonScan::SearchFolder(const std::string& folder, std::vector<std::string>& further) {
  const FileResult<std::vector<FolderEntry>> entries = files_.ListEntries(folder);
  std::vector<std::string> fileNames;
  for (const FolderEntry& entry : entries.value) {
    if (!entry.isFolder) {
      fileNames.push_back(entry.name);
    } else if (entry.name != "power" && !(IsChipName(entry.name) && classNames_.contains(entry.name))) {
      further.push_back(folder + "/" + entry.name);
    }
  }
  if (!folders_.contains(folder) && !ChannelsIn(fileNames).empty()) {
    unlinked_.push_back(folder);
  }
}

HwmonChannels HwmonScan::ChannelsOf(const std::string& folder) {
  const FileResult<std::vector<std::string>> names = files_.List(folder);
  return names ? ChannelsIn(names.value) : HwmonChannels{};
}

std::string HwmonScan::Text(const std::string& path) {
  const FileResult<std::string> text = files_.ReadAttribute(path);
  return text ? std::string(Trimmed(text.value)) : "";
}

}  // namespace emstatus::host
