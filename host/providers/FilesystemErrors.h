#pragma once

#include <cstdint>
#include <optional>

#include "host/providers/MountTable.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// What a filesystem has recorded of its errors. It keeps them over restarts, until it is told to forget
/// them.
struct FilesystemErrors {
  std::int64_t count = 0;
  /// When the last one was; seconds since 1970, 0 when it is not known.
  std::int64_t lastTime = 0;
  /// Whether each is damage to the filesystem, not one of a device that a copy may have mended.
  bool isDamage = false;
  /// Devices that the filesystem is to have and has not.
  std::uint32_t missingDevices = 0;
  /// The kind of errors, and what to do about them, for people.
  const char* what = "";
  const char* advice = "";
};

/// The errors that an ext4 (ext3, ext2) or a btrfs has recorded; absent for other filesystems and on kernels
/// that do not tell. [any thread]
std::optional<FilesystemErrors> ReadFilesystemErrors(SystemFiles& files, const Mount& mount);

}  // namespace emstatus::host
