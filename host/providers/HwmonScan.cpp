#include "host/providers/HwmonScan.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ThermalZoneNames.h"

namespace emstatus::host {
namespace {

const std::string kClass = "/sys/class/hwmon/";
const std::string kZones = "/sys/class/thermal/";
constexpr std::size_t kMostFolders = 100000;
constexpr int kSearchPatience = 4;

// Devices that stand with their bus alone, as in a copy without links; usually links lead to all of them.
void AddBusDevices(SystemFiles& files, std::vector<std::string>& folders) {
  for (const std::string& bus : files.List("/sys/bus").value) {
    const std::string devices = "/sys/bus/" + bus + "/devices";
    for (const FolderEntry& entry : files.ListEntries(devices).value) {
      if (entry.isFolder) {
        folders.push_back(devices + "/" + entry.name);
      }
    }
  }
}

// All folders below the devices that hold attributes of sensors. Only lists, so that no device is waited for.
std::vector<std::string> SearchDevices(SystemFiles& files) {
  std::vector<std::string> found;
  std::vector<std::string> further = {"/sys/devices"};
  AddBusDevices(files, further);
  for (std::size_t done = 0; !further.empty() && done < kMostFolders; ++done) {
    const std::string folder = std::move(further.back());
    further.pop_back();
    std::vector<std::string> fileNames;
    for (const FolderEntry& entry : files.ListEntries(folder).value) {
      if (!entry.isFolder) {
        fileNames.push_back(entry.name);
      } else if (entry.name != "power") {
        further.push_back(folder + "/" + entry.name);
      }
    }
    if (!ChannelsIn(fileNames).empty()) {
      found.push_back(folder);
    }
  }
  std::ranges::sort(found);
  return found;
}

// What a chip's channels are: orders those of one id, because it stays when the kernel numbers them anew.
std::string SignatureOf(const HwmonChip& chip) {
  std::string signature;
  for (const auto& [key, items] : chip.look.channels) {
    signature += key.Text() + " ";
  }
  return signature;
}

// Chips that would have the same text get what makes them different behind it.
void MakeDifferent(std::vector<HwmonChip>& chips, std::string HwmonChip::*text, bool byDevice) {
  std::map<std::string, std::size_t> count;
  for (const HwmonChip& chip : chips) {
    ++count[chip.*text];
  }
  for (HwmonChip& chip : chips) {
    const std::string& device = chip.look.device;
    if (byDevice && count[chip.*text] > 1 && !device.empty() && device != chip.*text) {
      chip.*text = device.starts_with(chip.*text) ? device : chip.*text + " " + device;
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

HwmonScan::HwmonScan(const FilesFactory& makeFiles, HwmonKind kind, std::chrono::milliseconds patience)
    : kind_(kind),
      files_(makeFiles()),
      classLooks_(makeFiles, patience),
      otherLooks_(makeFiles, patience),
      zoneTypes_(makeFiles, patience),
      search_(makeFiles, kSearchPatience * patience) {}

std::vector<HwmonChip> HwmonScan::Run(const std::vector<std::string>& classNames, bool searchDevices,
                                      Clock::time_point now) {
  chips_.clear();
  taken_.clear();
  silentNames_.clear();
  isWaiting_ = false;
  std::vector<std::string> folders;
  std::ranges::transform(classNames, std::back_inserter(folders),
                         [](const std::string& name) { return kClass + name; });
  // As the kernel counts them, so that hwmon10 does not come before hwmon9.
  std::ranges::stable_sort(folders, {}, &std::string::size);
  if (kind_ == HwmonKind::Board) {
    ReadZones(now);
  }
  const auto looks = LookAt(classLooks_, folders, now);
  std::set<std::string> borrowed;
  for (const std::string& folder : folders) {
    const DeviceAnswer<HwmonLook>& answer = looks.at(folder);
    if (!answer.sample) {
      // Nobody knows of what kind it is: one of the three tells it.
      if (kind_ == HwmonKind::Board) {
        const std::string name(BaseName(folder));
        silentNames_.insert(name);
        chips_.push_back({{}, name, name, answer.waitingSince.value_or(now)});
      }
      continue;
    }
    const HwmonLook& look = *answer.sample;
    taken_.insert(look.chipFolder);
    taken_.insert(look.deviceFolder);
    if (look.folder == look.chipFolder || borrowed.insert(look.folder).second) {
      Add(look);
    }
  }
  for (const auto& [folder, answer] : LookAt(otherLooks_, Unlinked(searchDevices, now), now)) {
    if (answer.sample && !IsCopied(*answer.sample)) {
      Add(*answer.sample);
    }
  }
  std::ranges::stable_sort(chips_, {}, SignatureOf);
  MakeDifferent(chips_, &HwmonChip::id, false);
  MakeDifferent(chips_, &HwmonChip::title, true);
  return std::move(chips_);
}

std::map<std::string, DeviceAnswer<HwmonLook>> HwmonScan::LookAt(Looks& looks,
                                                                 const std::vector<std::string>& folders,
                                                                 Clock::time_point now) {
  std::map<std::string, Looks::Take> takes;
  for (const std::string& folder : folders) {
    takes[folder] = [folder, kind = kind_](SystemFiles& files) { return LookAtChip(files, folder, kind); };
  }
  auto answers = looks.Read(takes, now);
  isWaiting_ = isWaiting_ || std::ranges::any_of(answers, [](const auto& answer) {
                 return answer.second.waitingSince.has_value();
               });
  return answers;
}

void HwmonScan::ReadZones(Clock::time_point now) {
  std::map<std::string, DeviceReads<std::string>::Take> takes;
  for (const std::string& zone : files_->List(kZones).value) {
    if (NumberAfter(zone, "thermal_zone")) {
      takes[zone] = [type = kZones + zone + "/type"](SystemFiles& files) {
        return files.ReadAttribute(type).value;
      };
    }
  }
  zones_.clear();
  for (const auto& [zone, answer] : zoneTypes_.Read(takes, now)) {
    if (answer.sample) {
      ++zones_[MirrorNameOf(*answer.sample)];
    }
  }
}

std::vector<std::string> HwmonScan::Unlinked(bool searchDevices, Clock::time_point now) {
  const auto& answers = searchDevices ? search_.Read({{"devices", SearchDevices}}, now) : search_.Collected();
  std::vector<std::string> folders;
  for (const auto& [key, answer] : answers) {
    isWaiting_ = isWaiting_ || answer.waitingSince.has_value();
    folders = answer.sample.value_or(std::vector<std::string>{});
  }
  std::erase_if(folders, [&](const std::string& folder) {
    return taken_.contains(folder) || silentNames_.contains(std::string(BaseName(folder)));
  });
  return folders;
}

void HwmonScan::Add(const HwmonLook& look) {
  if (look.channels.empty() || MirrorsThermalZone(look)) {
    return;
  }
  const bool isDisk = look.kind != HwmonKind::Board && !look.device.empty();
  std::string title = isDisk || look.name.empty() ? look.device : look.name;
  if (title.empty()) {
    title = BaseName(look.chipFolder);
  }
  chips_.push_back({look, look.identity, std::move(title), std::nullopt});
}

bool HwmonScan::IsCopied(const HwmonLook& look) const {
  return std::ranges::any_of(chips_, [&](const HwmonChip& chip) {
    return chip.look.chipFolder == kClass + std::string(BaseName(look.chipFolder)) &&
           chip.look.name == look.name && chip.look.channels == look.channels;
  });
}

bool HwmonScan::MirrorsThermalZone(const HwmonLook& look) const {
  if (look.deviceFolder.find("/thermal_zone") != std::string::npos) {
    return true;
  }
  const auto zone = zones_.find(look.name);
  return zone != zones_.end() && look.channels.size() <= zone->second &&
         std::ranges::all_of(look.channels, [](const auto& channel) {
           return channel.first.type->objectClass == ObjectClass::Temperature;
         });
}

}  // namespace emstatus::host
