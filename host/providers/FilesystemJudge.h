#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "host/providers/MountTable.h"
#include "host/providers/Reading.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// Used share of a filesystem, in percent, from which it is told.
struct UseLimits {
  double warning = 90;
  double critical = 95;
};

/// How full a filesystem is for ordinary users. A read-only one cannot fill up and is only measured. [any
/// thread]
Reading JudgeSpace(const Mount& mount, const FilesystemRoom& room, const UseLimits& limits);

/// How many of its inodes are used; absent where the filesystem does not count them. [any thread]
std::optional<Reading> JudgeInodes(const Mount& mount, const FilesystemRoom& room, const UseLimits& limits);

/// What ext4 has recorded of its errors.
struct Ext4Errors {
  std::int64_t count = 0;
  /// Seconds since 1970; 0 when it is not known.
  std::int64_t lastTime = 0;
};

/// What is remembered of a filesystem from read to read.
struct FilesystemMemory {
  bool wasWritable = false;
  /// Recorded errors that were there when reading began, or were confirmed.
  std::optional<std::int64_t> oldErrors;
};

/// Whether a filesystem can still be written as it is meant to be, and has recorded no errors. Updates
/// `memory`. [any thread]
Reading JudgeHealth(const Mount& mount, const std::optional<Ext4Errors>& errors, FilesystemMemory& memory,
                    std::chrono::system_clock::time_point wallTime);

}  // namespace emstatus::host
