#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/providers/Reading.h"

namespace emstatus::host {

/// One device in an md array.
struct MdMember {
  /// Without the "dev-" of its folder.
  std::string name;
  /// Words of its state ("in_sync", "faulty", ...); more may come with later kernels.
  std::vector<std::string> states;
  /// Read errors that were mended from the other members.
  std::optional<std::int64_t> errors;
  /// Why its state could not be read; 0 when it was.
  int error = 0;
};

/// What the kernel tells of an md array; texts as they were read, empty where they are not told (raid0 has no
/// sync_action, a container no raid_disks).
struct MdArray {
  std::string name;
  std::string level;
  /// "1.2", "external:imsm" for a container, "external:/md127/0" for an array in one.
  std::string metadata;
  std::string state;
  std::string disks;
  std::string layout;
  std::string action;
  std::string completed;
  std::optional<std::int64_t> degraded;
  std::vector<MdMember> members;
  /// Why its state could not be read; 0 when it was.
  int error = 0;
};

/// The number of members that an array needs, of a text like "4" or, while it is reshaped, "11 (10)": then
/// the smaller one, since those are what holds the data until the end. Absent for a container. [any thread]
std::optional<std::uint32_t> ParseRaidDisks(std::string_view text);

/// How many members an array of this level can always lose. `layout` tells the copies of a raid10. [any
/// thread]
std::uint32_t ToleratedLosses(std::string_view level, std::uint32_t disks, std::string_view layout);

/// How far a check or rebuild has come, in percent, of a text like "1024 / 4096". [any thread]
std::optional<double> ParseProgress(std::string_view text);

/// The reading of an array. [any thread]
Reading JudgeArray(const MdArray& array);

/// The reading of one of its members; `oldErrors` is what it had when reading began. [any thread]
Reading JudgeMember(const MdArray& array, const MdMember& member, std::int64_t oldErrors);

}  // namespace emstatus::host
