#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/Reading.h"

namespace emstatus::host {

/// What the kernel tells of a network link.
struct LinkFacts {
  std::string name;
  bool adminUp = false;
  std::string operstate;
  /// Why operstate could not be read; 0 when it was.
  int error = 0;
  /// Cannot be read while the link is administratively down.
  std::optional<bool> carrier;
  /// Mbit/s; -1 while it is not known.
  std::optional<std::int64_t> speed;
  /// The bond that it is a member of, and whether the bond's own watch thinks it works.
  std::string bond;
  bool worksInBond = true;
  /// Made by software (a bridge, a VLAN).
  bool isVirtual = false;
  bool required = false;
};

/// What is remembered of a link or a bond from read to read.
struct LinkMemory {
  bool wasUp = false;
  /// The most members that a bond had.
  std::uint32_t members = 0;
};

/// Whether data can pass: by operstate, where "unknown" counts as usable, and by the carrier. [any thread]
bool IsUsable(const LinkFacts& link);

/// The reading of a link. Down by the administrator is inactive; a link that was never up since reading began
/// is a warning (no cable?), one that was up and is down is critical. Updates `memory`. [any thread]
Reading JudgeLink(const LinkFacts& link, LinkMemory& memory);

/// The reading of a bond from those of its links that are its members; gives the links the bond's redundancy.
/// `minLinks`: the members without which it carries nothing. Updates `memory`. [any thread]
Reading JudgeBond(const LinkFacts& bond, std::uint32_t minLinks, const std::vector<LinkFacts>& members,
                  std::vector<Reading>& links, LinkMemory& memory);

}  // namespace emstatus::host
