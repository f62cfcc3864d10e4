#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "host/providers/FilesystemErrors.h"
#include "host/providers/MountTable.h"
#include "host/providers/Reading.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// Used share of a filesystem, in percent, from which it is told.
struct UseLimits {
  double warning = 90;
  double critical = 95;
};

/// The reading of an object of a mounted filesystem of which nothing is known yet. Of the objects of one that
/// is gone, its health is the one that is lost. [any thread]
Reading FilesystemReading(ObjectClass objectClass, const Mount& mount);

/// How full a filesystem is for ordinary users. A read-only one cannot fill up and is only measured; one that
/// is read-only just here can. [any thread]
Reading JudgeSpace(const Mount& mount, const FilesystemRoom& room, const UseLimits& limits);

/// How many of its inodes are used; absent where the filesystem does not count them. [any thread]
std::optional<Reading> JudgeInodes(const Mount& mount, const FilesystemRoom& room, const UseLimits& limits);

/// What is remembered of a filesystem from read to read.
struct FilesystemMemory {
  /// Here, and anywhere.
  bool wasWritable = false;
  bool superWasWritable = false;
  bool hasInodes = false;
  /// Recorded errors that were there when reading began, or were confirmed.
  std::optional<std::int64_t> oldErrors;
};

/// Whether a filesystem can still be written as it is meant to be, and has recorded no errors. Updates
/// `memory`. [any thread]
Reading JudgeHealth(const Mount& mount, const std::optional<FilesystemErrors>& errors,
                    FilesystemMemory& memory, std::chrono::system_clock::time_point wallTime);

}  // namespace emstatus::host
