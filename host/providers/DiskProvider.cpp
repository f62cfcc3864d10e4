#include "host/providers/DiskProvider.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <set>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

const std::string kFolder = "/sys/block";

// Made by software, or optical drives and floppies, whose media come and go.
constexpr std::array<std::string_view, 10> kLeftOut = {"loop", "ram", "zram", "dm-", "md",
                                                       "sr",   "fd",  "nbd",  "rbd", "mtdblock"};

// One path to a multipath namespace ("nvme0c1n1"); the namespace itself is told.
bool IsNvmePath(std::string_view name) {
  return name.starts_with("nvme") && name.find('c') != std::string_view::npos;
}

bool IsLeftOut(std::string_view name) {
  // The boot areas of an eMMC are parts of it.
  return name.find("boot") != std::string_view::npos || name.find("rpmb") != std::string_view::npos ||
         IsNvmePath(name) ||
         std::ranges::any_of(kLeftOut, [&](std::string_view prefix) { return name.starts_with(prefix); });
}

}  // namespace

DiskProvider::DiskProvider(const FilesFactory& makeFiles, std::shared_ptr<SmartReader> smart,
                           std::chrono::milliseconds patience)
    : files_(makeFiles()), smart_(std::move(smart)), drives_(makeFiles, patience) {}

std::vector<Reading> DiskProvider::Read(const ReadContext& context) {
  const std::map<std::string, DiskFacts> disks = ReadDisks();
  if (smart_) {
    AskDrives(disks, context.now);
  }
  std::vector<Reading> readings;
  for (const auto& [name, disk] : disks) {
    readings.push_back(JudgeDisk(disk, memories_[disk.identity], context.now));
    AddSmart(readings.back(), name);
  }
  return readings;
}

std::map<std::string, DiskFacts> DiskProvider::ReadDisks() {
  const FileResult<std::vector<std::string>> names = files_->List(kFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kFolder);
  }
  std::map<std::string, DiskFacts> disks;
  std::set<std::string> identities;
  for (const std::string& name : names.value) {
    if (IsLeftOut(name) || files_->List(kFolder + "/" + name + "/device").error != 0) {
      continue;
    }
    DiskFacts disk = ReadDisk(name);
    if (IsGone(disk.size.error)) {
      continue;
    }
    if (disk.identity.empty()) {
      disk.identity = name;
    } else if (!identities.insert(disk.identity).second) {
      // A second path to the same disk.
      disk.identity += "-" + name;
    }
    disks.emplace(name, std::move(disk));
  }
  return disks;
}

void DiskProvider::AskDrives(const std::map<std::string, DiskFacts>& disks,
                             DiskMemory::Clock::time_point now) {
  std::map<std::string, DeviceReads<FileResult<SmartHealth>>::Take> takes;
  for (const auto& [name, disk] : disks) {
    if (IsAsked(name)) {
      takes[name] = [smart = smart_, drive = name](SystemFiles&) { return smart->Ask(drive); };
    }
  }
  std::erase_if(healths_, [&](const auto& entry) { return !takes.contains(entry.first); });
  const bool isNew =
      std::ranges::any_of(takes, [this](const auto& take) { return !healths_.contains(take.first); });
  const bool isDue = !askedAt_ || now - *askedAt_ >= kSmartInterval;
  const auto& answers = isNew || isDue ? drives_.Read(takes, now) : drives_.Collected();
  if (isNew || isDue) {
    askedAt_ = now;
  }
  for (const auto& [name, answer] : answers) {
    Smart& known = healths_[name];
    if (answer.sample) {
      known.health = *answer.sample ? std::optional(answer.sample->value) : known.health;
      known.error = answer.sample->error;
    }
  }
}

// Bridges of USB enclosures and the like are left alone: some take these commands badly.
bool DiskProvider::IsAsked(const std::string& name) {
  if (name.starts_with("nvme")) {
    return true;
  }
  return name.starts_with("sd") &&
         Trimmed(files_->ReadAttribute(kFolder + "/" + name + "/device/vendor").value) == "ATA";
}

void DiskProvider::AddSmart(Reading& reading, const std::string& name) {
  const auto known = healths_.find(name);
  if (known == healths_.end() || reading.quality != Quality::Good) {
    return;
  }
  if (known->second.health) {
    JudgeSmart(reading, *known->second.health);
  } else if ((known->second.error == EACCES || known->second.error == EPERM) && reading.reason.empty()) {
    reading.reason = "its own word on its health (SMART) may not be read: " + ErrorText(known->second.error);
  }
}

DiskFacts DiskProvider::ReadDisk(const std::string& name) {
  const std::string folder = kFolder + "/" + name;
  const auto number = [&](const char* attribute) -> std::optional<std::uint64_t> {
    const FileResult<std::string> text = files_->ReadAttribute(folder + attribute);
    const std::vector<std::string_view> words = Words(text.value);
    return text && !words.empty() ? ParseUnsigned(words.back()) : std::nullopt;
  };
  DiskFacts disk;
  disk.name = name;
  disk.model = Trimmed(files_->ReadAttribute(folder + "/device/model").value);
  disk.identity = IdentityOf(folder);
  disk.size = files_->ReadAttribute(folder + "/size");
  const FileResult<std::string> state = files_->ReadAttribute(folder + "/device/state");
  if (!IsGone(state.error)) {
    disk.state = state;
  }
  disk.failures = number("/device/ioerr_cnt");
  disk.timeouts = number("/device/iotmo_cnt");
  disk.endOfLife = number("/device/pre_eol_info");
  disk.lifeUsed = number("/device/life_time");
  disk.isRemovable = number("/removable").value_or(0) != 0;
  return disk;
}

std::string DiskProvider::IdentityOf(const std::string& folder) {
  for (const char* attribute : {"/wwid", "/device/wwid", "/device/serial", "/serial", "/device/cid"}) {
    std::string text(Trimmed(files_->ReadAttribute(folder + attribute).value));
    if (!text.empty()) {
      return text;
    }
  }
  return "";
}

bool DiskProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  return objectClass == ObjectClass::Disk && memories_.erase(id) > 0;
}

}  // namespace emstatus::host
