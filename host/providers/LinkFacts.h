#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// What the kernel tells of a bond beyond what it tells of any link.
struct BondFacts {
  /// "active-backup", "802.3ad", ...
  std::string mode;
  std::vector<std::string> members;
  /// Members without which it carries nothing.
  std::uint32_t minLinks = 1;
  /// The member in use; empty when there is none, absent in modes that use them all.
  std::optional<std::string> active;
  /// 802.3ad: the address of the switch, all zeros without an answer; empty when we may not know it.
  std::string partner;
  /// 802.3ad: the group of ports that is in use.
  std::string aggregator;
};

/// What the kernel tells of a network link.
struct LinkFacts {
  std::string name;
  /// Stays when the link is renamed; 0 when it is not known.
  std::uint64_t index = 0;
  bool adminUp = false;
  std::string operstate;
  /// The attribute that could not be read, and why; 0 when all that matters could.
  std::string unread;
  int error = 0;
  /// Cannot be read while the link is administratively down.
  std::optional<bool> carrier;
  /// Mbit/s; -1 while it is not known.
  std::optional<std::int64_t> speed;
  std::string duplex;
  /// Times that it lost its carrier, and frames that arrived damaged, since it was found.
  std::optional<std::uint64_t> losses;
  std::optional<std::uint64_t> damaged;
  /// Made by software (a bridge, a VLAN).
  bool isVirtual = false;
  bool isBridge = false;
  /// Stands on other links (a VLAN, a bridge with ports).
  bool standsOnOthers = false;
  /// A function of an adapter that is handed to virtual machines and back.
  bool isHandedOut = false;
  bool isWireless = false;
  bool isInBond = false;
  /// In a bond: what the bond's own watch thinks of it ("up"), and the group of ports it is in (802.3ad).
  std::string watch;
  std::string aggregator;
  /// Only of a bond.
  std::optional<BondFacts> bond;

  /// Whether data can pass: by operstate, where "unknown" counts as usable, and by the carrier.
  bool IsUsable() const {
    if (error != 0 || !adminUp || (carrier && !*carrier)) {
      return false;
    }
    return operstate == "up" || operstate == "unknown";
  }
};

/// Reads /sys/class/net/`name`; absent for what is no link. [any thread]
std::optional<LinkFacts> ReadLinkFacts(SystemFiles& files, const std::string& name);

}  // namespace emstatus::host
