#include "host/providers/FilesystemProvider.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

Reading Unknown(ObjectClass objectClass, const Mount& mount) {
  Reading reading;
  reading.objectClass = objectClass;
  reading.id = mount.point;
  reading.name = mount.point;
  reading.mayGo = ComesAndGoes(mount.point);
  return reading;
}

// The filesystem has given up (a shut-down xfs) or its server has.
bool IsDead(int error) {
  return error == EIO || error == ENXIO || error == ESTALE || error == EHOSTDOWN;
}

std::int64_t NumberIn(SystemFiles& files, const std::string& path) {
  const FileResult<std::string> text = files.ReadAttribute(path);
  return text ? ParseInteger(text.value).value_or(0) : 0;
}

}  // namespace

FilesystemProvider::FilesystemProvider(const FilesFactory& makeFiles, std::vector<std::string> named,
                                       UseLimits limits, std::chrono::milliseconds patience)
    : named_(std::move(named)), limits_(limits), files_(makeFiles()), rooms_(makeFiles, patience) {}

std::vector<Reading> FilesystemProvider::Read(const ReadContext& context) {
  const FileResult<std::string> table = files_->ReadText("/proc/self/mountinfo", 8U << 20);
  if (!table) {
    throw std::system_error(table.error, std::generic_category(), "/proc/self/mountinfo");
  }
  const std::vector<Mount> mounts = MountsToTell(ParseMountInfo(table.value), named_);
  std::map<std::string, DeviceReads<FileResult<FilesystemRoom>>::Take> takes;
  for (const Mount& mount : mounts) {
    takes[mount.point] = [point = mount.point](SystemFiles& files) { return files.Room(point); };
  }
  const auto& answers = rooms_.Read(takes, context.now);
  std::vector<Reading> readings;
  for (const Mount& mount : mounts) {
    TellHealth(readings, mount, answers.at(mount.point), context);
    TellRoom(readings, mount, answers.at(mount.point), context);
  }
  TellNotMounted(readings, mounts);
  std::erase_if(memories_, [&](const auto& entry) { return !takes.contains(entry.first); });
  return readings;
}

std::optional<Ext4Errors> FilesystemProvider::ReadErrors(const Mount& mount) {
  if (mount.type != "ext4" && mount.type != "ext3" && mount.type != "ext2") {
    return std::nullopt;
  }
  const FileResult<std::string> device = files_->RealPath("/sys/dev/block/" + mount.device);
  const std::string name(BaseName(device ? device.value : mount.source));
  const std::string folder = "/sys/fs/ext4/" + name;
  const FileResult<std::string> count = files_->ReadAttribute(folder + "/errors_count");
  const auto number = count ? ParseInteger(count.value) : std::nullopt;
  if (!number) {
    return std::nullopt;
  }
  return Ext4Errors{*number, *number > 0 ? NumberIn(*files_, folder + "/last_error_time") : 0};
}

void FilesystemProvider::TellHealth(std::vector<Reading>& readings, const Mount& mount,
                                    const RoomAnswer& answer, const ReadContext& context) {
  Reading reading = JudgeHealth(mount, ReadErrors(mount), memories_[mount.point], context.wallTime);
  if (reading.condition == Condition::Good && answer.sample && !*answer.sample &&
      IsDead(answer.sample->error)) {
    reading.condition = Condition::Critical;
    reading.reason = "cannot be used: " + ErrorText(answer.sample->error);
    reading.advice = "look for disk or network errors in the kernel log";
  }
  const auto since = answer.sample ? answer.takenAt : answer.waitingSince.value_or(context.now);
  if (reading.condition == Condition::Good && (!answer.sample || context.now - since >= LateAfter())) {
    SetLate(reading, context.now - since);
  }
  readings.push_back(std::move(reading));
}

void FilesystemProvider::TellRoom(std::vector<Reading>& readings, const Mount& mount,
                                  const RoomAnswer& answer, const ReadContext& context) {
  if (!answer.sample) {
    readings.push_back(Unknown(ObjectClass::FilesystemSpace, mount));
    SetLate(readings.back(), context.now - answer.waitingSince.value_or(context.now));
    return;
  }
  std::vector<Reading> told;
  if (const FileResult<FilesystemRoom>& room = *answer.sample; room) {
    told.push_back(JudgeSpace(mount, room.value, limits_));
    if (auto inodes = JudgeInodes(mount, room.value, limits_)) {
      told.push_back(std::move(*inodes));
    }
  } else if (!IsGone(room.error)) {
    told.push_back(Unknown(ObjectClass::FilesystemSpace, mount));
    if (room.error == EOPNOTSUPP) {
      SetUnknown(told.back(), Quality::Inactive, "a copy of a machine does not tell it");
    } else {
      SetUnread(told.back(), mount.point, room.error);
    }
  }
  SetAge(told, answer.takenAt, context.now, LateAfter());
  std::ranges::move(told, std::back_inserter(readings));
}

void FilesystemProvider::TellNotMounted(std::vector<Reading>& readings,
                                        const std::vector<Mount>& told) const {
  for (const std::string& point : named_) {
    if (std::ranges::find(told, point, &Mount::point) == told.end()) {
      Mount mount;
      mount.point = point;
      Reading reading = Unknown(ObjectClass::FilesystemHealth, mount);
      reading.quality = Quality::Good;
      reading.condition = Condition::Critical;
      reading.customerServiceable = true;
      reading.reason = "not mounted, though it is named as required";
      reading.advice = "mount it, or take it out of emhost's list";
      readings.push_back(std::move(reading));
    }
  }
}

bool FilesystemProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  return objectClass == ObjectClass::FilesystemHealth && memories_.erase(id) > 0;
}

}  // namespace emstatus::host
