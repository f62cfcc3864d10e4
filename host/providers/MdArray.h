#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace emstatus::host {

/// One device in an md array.
struct MdMember {
  /// Without the "dev-" of its folder.
  std::string name;
  /// Words of its state ("in_sync", "faulty", ...); more may come with later kernels.
  std::vector<std::string> states;
  /// Its place in the array; absent for a spare, a journal, and one that was taken out.
  std::optional<std::uint32_t> slot;
  /// Read errors that were mended from the other members.
  std::optional<std::int64_t> errors;
  /// Why its state could not be read; 0 when it was.
  int error = 0;

  bool Is(std::string_view state) const { return std::ranges::find(states, state) != states.end(); }
  /// Whether the array has thrown it out. The kernel also says "faulty" of one in sync, for as long as its
  /// new bad blocks are not written down.
  bool IsThrownOut() const { return Is("faulty") && !Is("in_sync"); }
  /// Whether it holds its part of the data.
  bool IsInSync() const { return Is("in_sync") && !Is("journal"); }
};

/// What the kernel tells of an md array; texts as they were read, empty where they are not told (raid0 has no
/// sync_action, a container no raid_disks).
struct MdArray {
  std::string name;
  std::string level;
  /// "1.2", "external:imsm" for a container, "external:/md127/0" for an array in one ("external:-md127/0"
  /// while nobody keeps its metadata).
  std::string metadata;
  std::string state;
  std::string disks;
  std::string layout;
  std::string action;
  /// The last action that has ended.
  std::string lastAction;
  std::string completed;
  /// What keeps it consistent after a crash: "resync", "bitmap", "journal", ...
  std::string policy;
  std::optional<std::int64_t> degraded;
  /// Sectors that did not match in the last check or repair.
  std::optional<std::int64_t> mismatches;
  std::vector<MdMember> members;
  /// Why its state could not be read; 0 when it was.
  int error = 0;

  /// Whether it only holds the disks of other arrays.
  bool IsContainer() const {
    const bool isExternal = metadata.starts_with("external:") && ContainerName().empty();
    return level == "container" || (isExternal && disks.empty());
  }
  /// The container that it is in; empty when it is in none.
  std::string_view ContainerName() const {
    constexpr std::string_view kInContainer = "external:";
    std::string_view rest = metadata;
    if (!rest.starts_with(kInContainer) || rest.size() <= kInContainer.size()) {
      return {};
    }
    rest.remove_prefix(kInContainer.size());
    if (rest.front() != '/' && rest.front() != '-') {
      return {};
    }
    return rest.substr(1, rest.find('/', 1) - 1);
  }
};

}  // namespace emstatus::host
