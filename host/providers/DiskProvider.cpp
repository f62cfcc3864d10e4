#include "host/providers/DiskProvider.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

const std::string kFolder = "/sys/block";

// Made by software, of a virtual machine, or optical drives and floppies, whose media come and go.
constexpr std::array<std::string_view, 16> kLeftOut = {"loop", "ram",  "zram",   "dm-",      "md", "sr",
                                                       "fd",   "nbd",  "rbd",    "mtdblock", "vd", "xvd",
                                                       "zd",   "drbd", "bcache", "nullb"};

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

// Bridges of USB enclosures and the like are left alone: some take these commands badly.
bool IsAsked(const DiskFacts& disk) {
  return disk.name.starts_with("nvme") || (disk.name.starts_with("sd") && disk.isAta);
}

// `known`: the disks so far, by identity. A second path to one of them is named as such.
DiskFacts WithIdentity(DiskFacts disk, std::map<std::string, std::string>& known) {
  if (disk.identity.empty()) {
    disk.identity = disk.name;
  } else if (const auto [first, isNew] = known.emplace(disk.identity, disk.name); !isNew) {
    disk.identity += "-" + disk.name;
    disk.model += (disk.model.empty() ? "" : ", ") + std::string("another path to ") + first->second;
  }
  return disk;
}

}  // namespace

DiskProvider::DiskProvider(const FilesFactory& makeFiles, std::shared_ptr<SmartReader> smart,
                           std::chrono::milliseconds patience)
    : files_(makeFiles()),
      smart_(std::move(smart)),
      disks_(makeFiles, patience),
      drives_(makeFiles, patience) {}

std::vector<Reading> DiskProvider::Read(const ReadContext& context) {
  const FileResult<std::vector<std::string>> names = files_->List(kFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kFolder);
  }
  std::map<std::string, DeviceReads<DiskFacts>::Take> takes;
  for (const std::string& name : names.value) {
    if (!IsLeftOut(name)) {
      takes[name] = [name](SystemFiles& files) { return ReadDisk(files, name); };
    }
  }
  const Answers& disks = disks_.Read(takes, context.now);
  if (smart_) {
    AskDrives(disks, context.now);
  }
  std::vector<Reading> readings;
  std::map<std::string, std::string> known;
  for (const auto& [name, answer] : disks) {
    if (!answer.sample) {
      readings.push_back(
          SilentReading(ObjectClass::Disk, name, context.now - answer.waitingSince.value_or(context.now)));
    } else if (answer.sample->isTold) {
      const DiskFacts disk = WithIdentity(*answer.sample, known);
      std::vector<Reading> told = {JudgeDisk(disk, memories_[disk.identity], answer.takenAt)};
      AddSmart(told.front(), name, context.now);
      SetAge(told, answer.takenAt, context.now, LateAfter());
      readings.push_back(std::move(told.front()));
    }
  }
  return readings;
}

void DiskProvider::AskDrives(const Answers& disks, DiskMemory::Clock::time_point now) {
  std::map<std::string, DeviceReads<FileResult<SmartHealth>>::Take> takes;
  for (const auto& [name, answer] : disks) {
    if (answer.sample && answer.sample->isTold && IsAsked(*answer.sample)) {
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
    known.silentSince = answer.waitingSince;
    if (answer.sample) {
      known.health = *answer.sample ? std::optional(answer.sample->value) : known.health;
      known.error = answer.sample->error;
    }
  }
}

void DiskProvider::AddSmart(Reading& reading, const std::string& name,
                            DiskMemory::Clock::time_point now) const {
  const auto found = healths_.find(name);
  if (found == healths_.end() || reading.quality != Quality::Good) {
    return;
  }
  const Smart& known = found->second;
  if (known.health) {
    JudgeSmart(reading, *known.health);
  }
  if (reading.condition != Condition::Good) {
    return;
  }
  if (known.silentSince && now - *known.silentSince >= kSmartLateAfter) {
    SetLate(reading, now - *known.silentSince);
  } else if (known.error != 0 && known.error != ENODATA && known.error != EOPNOTSUPP &&
             known.error != ENOTTY && known.error != EINVAL && reading.reason.empty()) {
    reading.reason = "its own word on its health (SMART) cannot be read: " + ErrorText(known.error);
  }
}

bool DiskProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  return objectClass == ObjectClass::Disk && memories_.erase(id) > 0;
}

}  // namespace emstatus::host
