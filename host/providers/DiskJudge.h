#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "host/providers/Reading.h"
#include "host/providers/RecentCount.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// What the kernel tells of a disk.
struct DiskFacts {
  std::string name;
  std::string model;
  /// A serial number or world-wide name; the disk's name where there is none.
  std::string identity;
  /// In blocks of 512 bytes.
  FileResult<std::string> size;
  /// The device sits on a bus that ATA commands go through.
  bool isAta = false;
  /// A whole disk of the machine of which the kernel knows more than that it is there.
  bool isTold = false;
  /// SCSI: "running", "blocked", "offline", ...; NVMe: the controller's, the best of several; nothing for
  /// other disks.
  std::optional<FileResult<std::string>> state;
  /// SCSI: commands that failed, and that got no answer in time, since it was found.
  std::optional<std::uint64_t> failures;
  std::optional<std::uint64_t> timeouts;
  /// eMMC and SD: spare blocks used up (1 normal, 2 80 %, 3 urgent), and share of the life that is used, in
  /// tenths (0xB: beyond it).
  std::optional<std::uint64_t> endOfLife;
  std::optional<std::uint64_t> lifeUsed;
};

/// For how long failed commands are told, and how many of them are.
inline constexpr std::chrono::hours kDiskWindow{1};
inline constexpr std::uint64_t kDiskFailures = 10;

/// What is remembered of a disk from read to read.
struct DiskMemory {
  using Clock = std::chrono::steady_clock;
  RecentCount failures{kDiskWindow};
  RecentCount timeouts{kDiskWindow};
};

/// Reads what the kernel tells of a disk by its name ("sda"). [any thread]
DiskFacts ReadDisk(SystemFiles& files, const std::string& name);

/// The reading of a disk. Updates `memory`. [any thread]
Reading JudgeDisk(const DiskFacts& disk, DiskMemory& memory, DiskMemory::Clock::time_point now);

}  // namespace emstatus::host
