#include "host/providers/FilesystemProvider.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <set>
#include <system_error>
#include <utility>

#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

// The filesystem has given up (a shut-down xfs, a structure that makes no sense), its server has, or the
// program that it lives in.
bool IsDead(int error) {
  return error == EIO || error == ENXIO || error == EUCLEAN || error == EBADMSG || error == ESTALE ||
         error == EHOSTDOWN || error == ENOTCONN;
}

// As the kernel writes mount points, each once.
std::vector<std::string> MountPoints(const std::vector<std::string>& names) {
  std::set<std::string> points;
  for (std::string name : names) {
    while (name.size() > 1 && name.ends_with('/')) {
      name.pop_back();
    }
    points.insert(std::move(name));
  }
  return {points.begin(), points.end()};
}

}  // namespace

FilesystemProvider::FilesystemProvider(const FilesFactory& makeFiles, const std::vector<std::string>& named,
                                       UseLimits limits, std::chrono::milliseconds patience)
    : named_(MountPoints(named)), limits_(limits), files_(makeFiles()), reads_(makeFiles, patience) {}

std::vector<Reading> FilesystemProvider::Read(const ReadContext& context) {
  const FileResult<std::string> table = files_->ReadText("/proc/self/mountinfo", 8U << 20);
  if (!table) {
    throw std::system_error(table.error, std::generic_category(), "/proc/self/mountinfo");
  }
  const std::vector<Mount> mounts = MountsToTell(ParseMountInfo(table.value), named_);
  std::map<std::string, DeviceReads<Sample>::Take> takes;
  for (const Mount& mount : mounts) {
    if (!IsWaitingPlace(mount)) {
      takes[mount.point] = [mount](SystemFiles& files) {
        return Sample{files.Room(mount.point), ReadFilesystemErrors(files, mount)};
      };
    }
  }
  const auto& answers = reads_.Read(takes, context.now);
  std::vector<Reading> readings;
  for (const Mount& mount : mounts) {
    if (IsWaitingPlace(mount)) {
      readings.push_back(FilesystemReading(ObjectClass::FilesystemHealth, mount));
      SetUnknown(readings.back(), Quality::Inactive, "mounted when it is used, not in use now");
      continue;
    }
    TellHealth(readings, mount, answers.at(mount.point), context);
    TellRoom(readings, mount, answers.at(mount.point), context);
  }
  TellNotMounted(readings, mounts);
  std::erase_if(memories_, [&](const auto& entry) { return !takes.contains(entry.first); });
  return readings;
}

void FilesystemProvider::TellHealth(std::vector<Reading>& readings, const Mount& mount, const Answer& answer,
                                    const ReadContext& context) {
  const auto errors = answer.sample ? answer.sample->errors : std::nullopt;
  Reading reading = JudgeHealth(mount, errors, memories_[mount.point], context.wallTime);
  if (reading.condition == Condition::Good && answer.sample && IsDead(answer.sample->room.error)) {
    reading.condition = Condition::Critical;
    reading.reason = "cannot be used: " + ErrorText(answer.sample->room.error);
    reading.advice = "look for disk or network errors in the kernel log";
  }
  const auto since = answer.sample ? answer.takenAt : answer.waitingSince.value_or(context.now);
  if (reading.condition == Condition::Good && (!answer.sample || context.now - since >= LateAfter())) {
    SetLate(reading, context.now - since);
  }
  readings.push_back(std::move(reading));
}

void FilesystemProvider::TellRoom(std::vector<Reading>& readings, const Mount& mount, const Answer& answer,
                                  const ReadContext& context) {
  FilesystemMemory& memory = memories_[mount.point];
  std::vector<Reading> told;
  if (answer.sample && answer.sample->room) {
    const FilesystemRoom& room = answer.sample->room.value;
    told.push_back(JudgeSpace(mount, room, limits_));
    auto inodes = JudgeInodes(mount, room, limits_);
    memory.hasInodes = inodes.has_value();
    if (inodes) {
      told.push_back(std::move(*inodes));
    }
  } else {
    told.push_back(FilesystemReading(ObjectClass::FilesystemSpace, mount));
    if (memory.hasInodes) {
      told.push_back(FilesystemReading(ObjectClass::FilesystemInodes, mount));
    }
    for (Reading& reading : told) {
      if (!answer.sample) {
        SetLate(reading, context.now - answer.waitingSince.value_or(context.now));
      } else if (answer.sample->room.error == EOPNOTSUPP) {
        SetUnknown(reading, Quality::Inactive, "a copy of a machine does not tell it");
      } else {
        SetUnread(reading, mount.point, answer.sample->room.error);
      }
    }
  }
  if (answer.sample) {
    SetAge(told, answer.takenAt, context.now, LateAfter());
  }
  std::ranges::move(told, std::back_inserter(readings));
}

void FilesystemProvider::TellNotMounted(std::vector<Reading>& readings,
                                        const std::vector<Mount>& told) const {
  for (const std::string& point : named_) {
    if (std::ranges::find(told, point, &Mount::point) == told.end()) {
      Mount mount;
      mount.point = point;
      Reading reading = FilesystemReading(ObjectClass::FilesystemHealth, mount);
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
