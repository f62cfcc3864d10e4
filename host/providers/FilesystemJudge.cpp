#include "host/providers/FilesystemJudge.h"

#include <algorithm>

#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

Reading Described(ObjectClass objectClass, const Mount& mount) {
  Reading reading;
  reading.objectClass = objectClass;
  reading.id = mount.point;
  reading.name = mount.point;
  reading.quality = Quality::Good;
  reading.customerServiceable = true;
  reading.mayGo = ComesAndGoes(mount.point);
  return reading;
}

void JudgeUse(Reading& reading, double percent, const UseLimits& limits, const std::string& left) {
  reading.measurement = Measurement{percent, Unit::Percent, {}};
  reading.measurement->limits.upperWarning = limits.warning;
  reading.measurement->limits.upperCritical = limits.critical;
  if (percent < limits.warning) {
    return;
  }
  const bool critical = percent >= limits.critical;
  reading.condition = critical ? Condition::Critical : Condition::Warning;
  reading.reason =
      Format("%.1f %% used, less than %.0f %% expected; %s left", percent, limits.warning, left.c_str());
}

void JudgeErrors(Reading& reading, const Ext4Errors& errors, FilesystemMemory& memory,
                 std::chrono::system_clock::time_point wallTime) {
  memory.oldErrors = std::min(memory.oldErrors.value_or(errors.count), errors.count);
  if (errors.count <= 0) {
    return;
  }
  const std::int64_t fresh = errors.count - *memory.oldErrors;
  reading.condition = fresh > 0 ? Condition::Critical : Condition::Warning;
  reading.reason =
      Format("%lld filesystem errors recorded, 0 expected", static_cast<long long>(errors.count));
  if (fresh > 0) {
    reading.reason += Format(", %lld of them new", static_cast<long long>(fresh));
  }
  if (errors.lastTime > 0) {
    const auto now = std::chrono::duration_cast<std::chrono::seconds>(wallTime.time_since_epoch()).count();
    reading.reason += "; the last " +
                      SpanText(static_cast<double>(std::max<std::int64_t>(0, now - errors.lastTime))) +
                      " ago";
  }
  reading.advice = "unmount it and run e2fsck; look for disk errors in the kernel log";
}

}  // namespace

Reading JudgeSpace(const Mount& mount, const FilesystemRoom& room, const UseLimits& limits) {
  Reading reading = Described(ObjectClass::FilesystemSpace, mount);
  const double used = static_cast<double>(room.size - std::min(room.size, room.free));
  const double usable = used + static_cast<double>(room.available);
  if (usable <= 0) {
    reading.quality = Quality::Implausible;
    reading.reason = "the filesystem says that its size is 0";
    return reading;
  }
  const double percent = 100 * used / usable;
  if (mount.mountReadOnly || mount.superReadOnly || room.readOnly) {
    reading.measurement = Measurement{percent, Unit::Percent, {}};
    return reading;
  }
  JudgeUse(reading, percent, limits,
           ValueText(static_cast<double>(room.available), Unit::Byte) + " of " +
               ValueText(static_cast<double>(room.size), Unit::Byte));
  if (reading.condition != Condition::Good) {
    reading.advice = "remove or move files, or enlarge the filesystem";
  }
  return reading;
}

std::optional<Reading> JudgeInodes(const Mount& mount, const FilesystemRoom& room, const UseLimits& limits) {
  if (room.inodes == 0) {
    return std::nullopt;
  }
  Reading reading = Described(ObjectClass::FilesystemInodes, mount);
  const std::uint64_t used = room.inodes - std::min(room.inodes, room.inodesFree);
  const double percent = 100 * static_cast<double>(used) / static_cast<double>(room.inodes);
  if (mount.mountReadOnly || mount.superReadOnly || room.readOnly) {
    reading.measurement = Measurement{percent, Unit::Percent, {}};
    return reading;
  }
  JudgeUse(reading, percent, limits,
           Format("%llu of %llu inodes", static_cast<unsigned long long>(room.inodes - used),
                  static_cast<unsigned long long>(room.inodes)));
  if (reading.condition != Condition::Good) {
    reading.advice = "remove files that are many and small (caches, sessions, mail queues)";
  }
  return reading;
}

Reading JudgeHealth(const Mount& mount, const std::optional<Ext4Errors>& errors, FilesystemMemory& memory,
                    std::chrono::system_clock::time_point wallTime) {
  Reading reading = Described(ObjectClass::FilesystemHealth, mount);
  reading.customerServiceable = false;
  if (errors) {
    JudgeErrors(reading, *errors, memory, wallTime);
  }
  const bool readOnly = mount.mountReadOnly || mount.superReadOnly;
  const bool madeReadOnly =
      mount.superReadOnly && !mount.mountReadOnly && KindOf(mount) == FilesystemKind::Disk;
  if (madeReadOnly || (readOnly && memory.wasWritable)) {
    reading.condition = Condition::Critical;
    const std::string recorded = reading.reason.empty() ? "" : "; " + reading.reason;
    reading.reason = madeReadOnly ? "mounted read-write, but the kernel made it read-only after an error"
                                  : "turned read-only while it was watched, read-write expected";
    reading.reason += recorded;
    reading.advice = "save the data, look for disk errors in the kernel log, then check the filesystem";
  } else if (readOnly && reading.reason.empty()) {
    reading.reason = "mounted read-only";
  }
  memory.wasWritable = memory.wasWritable || !readOnly;
  return reading;
}

}  // namespace emstatus::host
