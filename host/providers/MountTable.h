#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace emstatus::host {

/// One line of /proc/self/mountinfo.
struct Mount {
  /// "major:minor" of the device.
  std::string device;
  /// The folder of the filesystem that is mounted ("/" but for bind mounts and subvolumes).
  std::string root;
  std::string point;
  std::string type;
  std::string source;
  /// This mount was asked to be read-only.
  bool mountReadOnly = false;
  /// The filesystem is read-only; without mountReadOnly, the kernel made it so after an error.
  bool superReadOnly = false;
  /// The filesystem gave up after an error: nothing can be read or written.
  bool isShutDown = false;
  /// Mounted when it is first used, and unmounted when it is not used for a while (autofs).
  bool isOnDemand = false;

  friend bool operator==(const Mount&, const Mount&) = default;
};

enum class FilesystemKind : std::uint8_t {
  Disk,
  /// Packed once and always full (squashfs, iso9660).
  Image,
  Network,
  /// Lives in memory, in a program or in another filesystem.
  Pseudo,
};

/// The mounts in a mountinfo text, in order; lines that are not understood are left out. [any thread]
std::vector<Mount> ParseMountInfo(std::string_view text);

/// What sort of filesystem a mount is, by its type and, for types nobody has heard of, by its source. [any
/// thread]
FilesystemKind KindOf(const Mount& mount);

/// The mounts whose health is told: each disk filesystem once, at its own root if it is mounted there, at its
/// shortest mount point otherwise; an overlay as the root of a container; and whatever is named. A mount that
/// another one covers is left out. [any thread]
std::vector<Mount> MountsToTell(const std::vector<Mount>& mounts, const std::vector<std::string>& named);

/// Whether it is only the place where a mount comes when somebody looks there: looking would make it come.
/// [any thread]
bool IsWaitingPlace(const Mount& mount);

/// Whether the mount comes and goes in normal work (removable media, container volumes, on demand). [any
/// thread]
bool ComesAndGoes(const Mount& mount);

}  // namespace emstatus::host
