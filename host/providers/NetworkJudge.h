#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "host/providers/LinkFacts.h"
#include "host/providers/Reading.h"
#include "host/providers/RecentCount.h"

namespace emstatus::host {

/// For how long lost carriers and damaged frames are told, and how many of them are.
inline constexpr std::chrono::minutes kLinkWindow{10};
inline constexpr std::uint64_t kLinkLosses = 3;
inline constexpr std::uint64_t kDamagedFrames = 100;

/// What is remembered of a link from read to read.
struct LinkMemory {
  bool wasUp = false;
  /// Mbit/s.
  std::int64_t bestSpeed = 0;
  RecentCount losses{kLinkWindow};
  RecentCount damaged{kLinkWindow};
};

/// What is remembered of a bond from read to read: the most members that it had.
struct BondMemory {
  std::uint32_t members = 0;
};

/// The reading of a link. Down by the administrator is inactive; a link that was never up since reading began
/// is a warning (no cable?), one that was up and is down is critical. A virtual link only follows those below
/// it, so it is no fault of its own, unless it is `required`. Updates `memory`. [any thread]
Reading JudgeLink(const LinkFacts& link, bool required, LinkMemory& memory,
                  std::chrono::steady_clock::time_point now);

/// The reading of a bond from those of its links that are its `members`; gives the `links` the bond's
/// redundancy. Updates `memory`. [any thread]
Reading JudgeBond(const LinkFacts& bond, bool required, const std::vector<LinkFacts>& members,
                  std::vector<Reading>& links, BondMemory& memory);

}  // namespace emstatus::host
