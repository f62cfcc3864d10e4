#include "host/providers/FilesystemJudge.h"

#include <algorithm>

#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

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

std::string AgeText(std::int64_t time, std::chrono::system_clock::time_point wallTime) {
  const auto now = std::chrono::duration_cast<std::chrono::seconds>(wallTime.time_since_epoch()).count();
  return SpanText(static_cast<double>(std::max<std::int64_t>(0, now - time))) + " ago";
}

void JudgeErrors(Reading& reading, const FilesystemErrors& errors, FilesystemMemory& memory,
                 std::chrono::system_clock::time_point wallTime) {
  memory.oldErrors = std::min(memory.oldErrors.value_or(errors.count), errors.count);
  if (errors.missingDevices > 0) {
    reading.condition = Condition::Critical;
    reading.reason = Format("%u of its devices are missing, none expected", errors.missingDevices);
    reading.advice = "look for the disk; then btrfs replace or btrfs device remove missing";
    return;
  }
  if (errors.count <= 0) {
    return;
  }
  const std::int64_t fresh = errors.count - *memory.oldErrors;
  reading.condition = fresh > 0 && errors.isDamage ? Condition::Critical : Condition::Warning;
  reading.reason =
      Format("%lld %s errors recorded, 0 expected", static_cast<long long>(errors.count), errors.what);
  if (fresh > 0) {
    reading.reason += Format(", %lld of them new", static_cast<long long>(fresh));
  }
  if (errors.lastTime > 0) {
    reading.reason += "; the last " + AgeText(errors.lastTime, wallTime);
  }
  reading.advice = errors.advice;
}

}  // namespace

Reading FilesystemReading(ObjectClass objectClass, const Mount& mount) {
  Reading reading;
  reading.objectClass = objectClass;
  reading.id = reading.name = mount.point;
  reading.customerServiceable = objectClass != ObjectClass::FilesystemHealth;
  reading.mayGo = objectClass != ObjectClass::FilesystemHealth || ComesAndGoes(mount);
  return reading;
}

Reading JudgeSpace(const Mount& mount, const FilesystemRoom& room, const UseLimits& limits) {
  Reading reading = FilesystemReading(ObjectClass::FilesystemSpace, mount);
  reading.quality = Quality::Good;
  const double used = static_cast<double>(room.size - std::min(room.size, room.free));
  const double usable = used + static_cast<double>(room.available);
  if (usable <= 0) {
    reading.quality = Quality::Implausible;
    reading.reason = "the filesystem says that its size is 0";
    return reading;
  }
  const double percent = 100 * used / usable;
  if (mount.superReadOnly) {
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
  Reading reading = FilesystemReading(ObjectClass::FilesystemInodes, mount);
  reading.quality = Quality::Good;
  const std::uint64_t used = room.inodes - std::min(room.inodes, room.inodesFree);
  const double percent = 100 * static_cast<double>(used) / static_cast<double>(room.inodes);
  if (mount.superReadOnly) {
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

Reading JudgeHealth(const Mount& mount, const std::optional<FilesystemErrors>& errors,
                    FilesystemMemory& memory, std::chrono::system_clock::time_point wallTime) {
  Reading reading = FilesystemReading(ObjectClass::FilesystemHealth, mount);
  reading.quality = Quality::Good;
  if (errors) {
    JudgeErrors(reading, *errors, memory, wallTime);
  }
  const bool readOnly = mount.mountReadOnly || mount.superReadOnly;
  const bool madeReadOnly =
      mount.superReadOnly && !mount.mountReadOnly && KindOf(mount) == FilesystemKind::Disk;
  const bool turned = (readOnly && memory.wasWritable) || (mount.superReadOnly && memory.superWasWritable);
  if (mount.isShutDown || madeReadOnly || turned) {
    reading.condition = Condition::Critical;
    const std::string recorded = reading.reason.empty() ? "" : "; " + reading.reason;
    reading.reason = mount.isShutDown ? "has shut itself down after an error: nothing can be read or written"
                     : madeReadOnly   ? "mounted read-write, but the kernel made it read-only after an error"
                                      : "turned read-only while it was watched, read-write expected";
    reading.reason += recorded;
    reading.advice = "save the data, look for disk errors in the kernel log, then check the filesystem";
  } else if (readOnly && reading.reason.empty()) {
    reading.reason = mount.superReadOnly ? "mounted read-only" : "read-only at this mount point";
  }
  memory.wasWritable = memory.wasWritable || !readOnly;
  memory.superWasWritable = memory.superWasWritable || !mount.superReadOnly;
  return reading;
}

}  // namespace emstatus::host
