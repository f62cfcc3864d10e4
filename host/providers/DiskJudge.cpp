#include "host/providers/DiskJudge.h"

#include <algorithm>
#include <array>

#include "host/providers/Blame.h"
#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

constexpr double kBlock = 512;
constexpr std::uint64_t kLifeOver = 0xB;

void JudgeState(Reading& reading, const std::string& state) {
  constexpr std::array<std::string_view, 4> kGood = {"running", "live", "created", "new"};
  constexpr std::array<std::string_view, 6> kFailed = {"offline", "transport-offline", "deleted",
                                                       "cancel",  "deleting (no IO)",  "dead"};
  if (std::ranges::find(kGood, state) == kGood.end()) {
    const bool hasFailed = std::ranges::find(kFailed, state) != kFailed.end();
    Blame(reading, hasFailed ? Condition::Critical : Condition::Warning,
          "its state is " + state + ", running expected",
          "look at its cable or path and at the kernel log; replace it when it does not come back");
  }
}

// The state of the device, or of the controllers behind which a drive with several ports stands.
std::optional<FileResult<std::string>> StateOf(SystemFiles& files, const std::string& device) {
  const FileResult<std::string> own = files.ReadAttribute(device + "/state");
  if (!IsGone(own.error)) {
    return own;
  }
  std::optional<FileResult<std::string>> best;
  for (const std::string& name : files.List(device).value) {
    if (NumberAfter(name, "nvme")) {
      const FileResult<std::string> state = files.ReadAttribute(device + "/" + name + "/state");
      if (!IsGone(state.error) && (!best || state.value == "live")) {
        best = state;
      }
    }
  }
  return best;
}

void JudgeLife(Reading& reading, const DiskFacts& disk) {
  if (disk.endOfLife && *disk.endOfLife >= 2) {
    const bool urgent = *disk.endOfLife >= 3;
    Blame(reading, urgent ? Condition::Critical : Condition::Warning,
          urgent ? "90 % of its spare blocks are used up, less than 80 % expected"
                 : "80 % of its spare blocks are used up, less than 80 % expected",
          "replace it");
  }
  if (disk.lifeUsed && *disk.lifeUsed >= kLifeOver - 1) {
    Blame(reading, Condition::Warning,
          *disk.lifeUsed >= kLifeOver ? "it is beyond its expected life"
                                      : "more than 90 % of its expected life is used",
          "replace it");
  }
}

void JudgeErrors(Reading& reading, const DiskFacts& disk, DiskMemory& memory,
                 DiskMemory::Clock::time_point now) {
  const std::uint64_t timeouts = memory.timeouts.Update(disk.timeouts, now);
  const std::uint64_t failures = memory.failures.Update(disk.failures, now);
  if (timeouts > 0) {
    Blame(reading, Condition::Warning,
          Format("%llu commands got no answer in the last hour, 0 expected",
                 static_cast<unsigned long long>(timeouts)),
          "look at its cable and its SMART data; plan to replace it");
  } else if (failures >= kDiskFailures) {
    Blame(reading, Condition::Warning,
          Format("%llu commands failed in the last hour, less than %llu expected",
                 static_cast<unsigned long long>(failures), static_cast<unsigned long long>(kDiskFailures)),
          "look at its SMART data; plan to replace it");
  }
}

}  // namespace

DiskFacts ReadDisk(SystemFiles& files, const std::string& name) {
  const std::string folder = "/sys/block/" + name;
  const auto text = [&](const char* attribute) {
    return std::string(Trimmed(files.ReadAttribute(folder + attribute).value));
  };
  const auto number = [&](const char* attribute) -> std::optional<std::uint64_t> {
    const std::string line = text(attribute);
    const std::vector<std::string_view> words = Words(line);
    return words.empty() ? std::nullopt : ParseUnsigned(words.back());
  };
  DiskFacts disk;
  disk.name = name;
  disk.size = files.ReadAttribute(folder + "/size");
  // A stick, a card reader, or a medium that a management controller lends: none of the machine's disks.
  if (IsGone(disk.size.error) || number("/removable").value_or(0) != 0) {
    return disk;
  }
  disk.state = StateOf(files, folder + "/device");
  disk.endOfLife = number("/device/pre_eol_info");
  disk.lifeUsed = number("/device/life_time");
  disk.isTold = disk.state || disk.endOfLife || disk.lifeUsed;
  disk.isAta = text("/device/vendor") == "ATA";
  disk.model = text("/device/model");
  for (const char* attribute : {"/wwid", "/device/wwid", "/device/serial", "/serial", "/device/cid"}) {
    disk.identity = disk.identity.empty() ? text(attribute) : disk.identity;
  }
  disk.failures = number("/device/ioerr_cnt");
  disk.timeouts = number("/device/iotmo_cnt");
  return disk;
}

Reading JudgeDisk(const DiskFacts& disk, DiskMemory& memory, DiskMemory::Clock::time_point now) {
  Reading reading;
  reading.objectClass = ObjectClass::Disk;
  reading.id = disk.identity;
  reading.name = disk.name + (disk.model.empty() ? "" : " (" + disk.model + ")");
  reading.customerServiceable = true;
  if (!disk.size) {
    SetUnread(reading, "size", disk.size.error);
    return reading;
  }
  const auto blocks = ParseUnsigned(disk.size.value);
  if (!blocks) {
    SetUnknown(reading, Quality::Implausible, "size reads \"" + disk.size.value + "\", a number expected");
    return reading;
  }
  if (disk.state && !*disk.state) {
    SetUnread(reading, "state", disk.state->error);
    return reading;
  }
  reading.quality = Quality::Good;
  reading.measurement = Measurement{static_cast<double>(*blocks) * kBlock, Unit::Byte, {}};
  if (disk.state) {
    JudgeState(reading, disk.state->value);
  }
  if (*blocks == 0) {
    Blame(reading, Condition::Critical, "its size is 0 B, more expected",
          "look at the kernel log; replace it");
  }
  JudgeLife(reading, disk);
  JudgeErrors(reading, disk, memory, now);
  return reading;
}

}  // namespace emstatus::host
