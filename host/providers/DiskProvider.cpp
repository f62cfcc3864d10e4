#include "host/providers/DiskProvider.h"

#include <algorithm>
#include <array>
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

DiskProvider::DiskProvider(std::unique_ptr<SystemFiles> files) : files_(std::move(files)) {}

std::vector<Reading> DiskProvider::Read(const ReadContext& context) {
  const FileResult<std::vector<std::string>> names = files_->List(kFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kFolder);
  }
  std::vector<Reading> readings;
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
    readings.push_back(JudgeDisk(disk, memories_[disk.identity], context.now));
  }
  return readings;
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
