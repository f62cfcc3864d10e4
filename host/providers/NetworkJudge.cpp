#include "host/providers/NetworkJudge.h"

#include <algorithm>
#include <utility>

#include "host/providers/Blame.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

constexpr std::int64_t kFastest = 10'000'000;
constexpr char kLookAtCable[] = "look at the cable, the port of the switch and the transceiver";

std::string SpeedText(std::int64_t speed) {
  return ValueText(static_cast<double>(speed) * 1e6, Unit::BitPerSecond);
}

const char* DownText(const LinkFacts& link) {
  if (link.operstate == "lowerlayerdown") {
    return "the link below it is down";
  }
  if (link.operstate == "notpresent") {
    return "parts of its device are missing";
  }
  if (link.operstate == "dormant") {
    return "waits for another party (dormant)";
  }
  if (link.operstate == "testing") {
    return "is being tested";
  }
  return "no carrier";
}

void JudgeDown(Reading& reading, const LinkFacts& link, bool required, const LinkMemory& memory) {
  if (link.isVirtual && !required && !link.isInBond) {
    SetUnknown(reading, Quality::Inactive,
               std::string(DownText(link)) + "; a virtual link follows what is connected to it");
    return;
  }
  const bool passing = link.operstate == "dormant" || link.operstate == "testing";
  const bool fault = !passing && (memory.wasUp || required);
  std::string reason = std::string(DownText(link)) + ", though it is switched on; up expected";
  if (!passing && !memory.wasUp) {
    reason += "; never up since reading began";
  }
  Blame(reading, fault ? Condition::Critical : Condition::Warning, std::move(reason),
        memory.wasUp || required || passing ? kLookAtCable
                                            : "plug the cable in, or switch the link off (ip link set " +
                                                  link.name + " down) when it is not used");
}

void TellSwitchedOff(Reading& reading, const LinkFacts& link, bool required) {
  if (required) {
    Blame(reading, Condition::Critical, "switched off by the administrator, though it is named as required",
          "switch it on: ip link set " + link.name + " up");
  } else {
    SetUnknown(reading, Quality::Inactive, "switched off by the administrator");
  }
}

void JudgeSpeed(Reading& reading, const LinkFacts& link, LinkMemory& memory) {
  if (!link.speed || *link.speed <= 0 || *link.speed > kFastest) {
    return;
  }
  reading.measurement = Measurement{static_cast<double>(*link.speed) * 1e6, Unit::BitPerSecond, {}};
  // Wireless links change theirs all the time, virtual ones have none.
  if (link.isVirtual || link.isWireless) {
    return;
  }
  memory.bestSpeed = std::max(memory.bestSpeed, *link.speed);
  if (*link.speed < memory.bestSpeed) {
    Blame(reading, Condition::Warning,
          SpeedText(*link.speed) + ", " + SpeedText(memory.bestSpeed) + " before",
          std::string(kLookAtCable) + "; confirm when it is meant so");
  } else if (link.duplex == "half") {
    Blame(reading, Condition::Warning, "half duplex, full expected",
          "let both ends negotiate, or set both to the same");
  }
}

void JudgeQuality(Reading& reading, std::uint64_t losses, std::uint64_t damaged) {
  const auto minutes = static_cast<long long>(kLinkWindow.count());
  if (losses >= kLinkLosses) {
    Blame(reading, Condition::Warning,
          Format("lost its carrier %llu times in the last %lld min, less than %llu expected",
                 static_cast<unsigned long long>(losses), minutes,
                 static_cast<unsigned long long>(kLinkLosses)),
          kLookAtCable);
  } else if (damaged >= kDamagedFrames) {
    Blame(reading, Condition::Warning,
          Format("%llu frames arrived damaged in the last %lld min, less than %llu expected",
                 static_cast<unsigned long long>(damaged), minutes,
                 static_cast<unsigned long long>(kDamagedFrames)),
          kLookAtCable);
  }
}

// Whether a bond can send through the member.
bool WorksIn(const BondFacts& bond, const LinkFacts& member) {
  if (!member.IsUsable() || (!member.watch.empty() && member.watch != "up")) {
    return false;
  }
  return bond.aggregator.empty() || bond.aggregator == "0" || member.aggregator.empty() ||
         member.aggregator == bond.aggregator;
}

bool HasNoPartner(const BondFacts& bond) {
  return !bond.partner.empty() && bond.partner.find_first_not_of("0:") == std::string::npos;
}

// What is wrong with the bond itself, enough of its links being there.
void JudgeBondItself(Reading& reading, const LinkFacts& bond) {
  if (bond.bond->active && bond.bond->active->empty()) {
    Blame(reading, Condition::Critical, "none of its links is in use, one expected", kLookAtCable);
  } else if (!bond.IsUsable()) {
    Blame(reading, Condition::Critical, "its links work, but the bond has no carrier",
          "look at its settings (min_links, arp_ip_target) and at the switch");
  } else if (HasNoPartner(*bond.bond)) {
    // Which is also why the other links do not work.
    reading.condition = Condition::Warning;
    reading.reason = "the switch does not answer as a partner (LACP)" +
                     (reading.reason.empty() ? "" : "; " + reading.reason);
    reading.advice = "set the ports of the switch up for LACP";
  }
}

struct BondCount {
  Redundancy group;
  std::string down;
  std::string unknown;
  std::uint32_t unknowns = 0;
};

BondCount CountMembers(const LinkFacts& bond, const std::vector<LinkFacts>& members, BondMemory& memory) {
  memory.members = std::max(memory.members, static_cast<std::uint32_t>(members.size()));
  BondCount count{{bond.name, memory.members, bond.bond->minLinks, 0}, "", "", 0};
  for (const LinkFacts& member : members) {
    if (member.error != 0) {
      AddToList(count.unknown, member.name);
      ++count.unknowns;
    } else if (WorksIn(*bond.bond, member)) {
      ++count.group.present;
    } else {
      AddToList(count.down, member.name);
    }
  }
  return count;
}

void JudgeMembers(Reading& reading, const LinkFacts& bond, const BondCount& count) {
  const std::size_t members = bond.bond->members.size();
  const Redundancy& group = count.group;
  if (group.present >= group.members && group.present >= group.needed) {
    return;
  }
  std::string reason = Format("%u of %u links work, %u expected", group.present, group.members,
                              std::max(group.members, group.needed));
  reason += count.down.empty() ? "" : "; down: " + count.down;
  reason += count.unknown.empty() ? "" : "; not known: " + count.unknown;
  if (members < group.members) {
    reason += Format("; %zu taken out of the bond", group.members - members);
  }
  if (bond.IsUsable() && group.present < group.needed && group.present + count.unknowns >= group.needed) {
    // The links that were not read decide it.
    SetUnknown(reading, Quality::Late, std::move(reason));
    return;
  }
  Blame(reading, group.present >= group.needed ? Condition::Warning : Condition::Critical, std::move(reason),
        std::string(kLookAtCable) + " of what is down");
}

}  // namespace

Reading JudgeLink(const LinkFacts& link, bool required, LinkMemory& memory,
                  std::chrono::steady_clock::time_point now) {
  Reading reading;
  reading.objectClass = ObjectClass::NetworkLink;
  reading.id = link.name;
  reading.name = link.name;
  reading.customerServiceable = true;
  reading.mayGo = (link.isVirtual || link.isHandedOut) && !required;
  if (link.error != 0) {
    SetUnread(reading, link.unread, link.error);
    return reading;
  }
  reading.quality = Quality::Good;
  const std::uint64_t losses = memory.losses.Update(link.losses, now);
  const std::uint64_t damaged = memory.damaged.Update(link.damaged, now);
  if (!link.adminUp) {
    TellSwitchedOff(reading, link, required);
  } else if (link.IsUsable()) {
    memory.wasUp = true;
    JudgeSpeed(reading, link, memory);
    if (!link.isVirtual) {
      JudgeQuality(reading, losses, damaged);
    }
  } else {
    JudgeDown(reading, link, required, memory);
  }
  return reading;
}

Reading JudgeBond(const LinkFacts& bond, bool required, const std::vector<LinkFacts>& members,
                  std::vector<Reading>& links, BondMemory& memory) {
  const BondCount count = CountMembers(bond, members, memory);
  for (Reading& link : links) {
    if (std::ranges::find(members, link.id, &LinkFacts::name) != members.end()) {
      link.redundancy = count.group;
    }
  }
  Reading reading;
  reading.objectClass = ObjectClass::NetworkBond;
  reading.id = bond.name;
  reading.name = bond.name;
  reading.customerServiceable = true;
  reading.redundancy = count.group;
  if (bond.error != 0) {
    SetUnread(reading, bond.unread, bond.error);
    return reading;
  }
  reading.quality = Quality::Good;
  if (!bond.adminUp) {
    TellSwitchedOff(reading, bond, required);
  } else if (memory.members == 0) {
    Blame(reading, required ? Condition::Critical : Condition::Warning, "no link is in it, 1 expected",
          "add links to it, or switch it off (ip link set " + bond.name + " down) when it is not used");
  } else {
    reading.measurement = Measurement{static_cast<double>(count.group.present), Unit::Count, {}};
    JudgeMembers(reading, bond, count);
    if (reading.quality == Quality::Good && reading.condition != Condition::Critical) {
      JudgeBondItself(reading, bond);
    }
  }
  return reading;
}

}  // namespace emstatus::host
