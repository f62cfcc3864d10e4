#include "host/providers/NetworkJudge.h"

#include <algorithm>

#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

constexpr std::int64_t kFastest = 10'000'000;

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

void JudgeDown(Reading& reading, const LinkFacts& link, const LinkMemory& memory) {
  if (link.isVirtual && !link.required && !memory.wasUp && link.bond.empty()) {
    reading.quality = Quality::Inactive;
    reading.reason = std::string(DownText(link)) + "; a virtual link that nothing is connected to";
    return;
  }
  const bool passing = link.operstate == "dormant" || link.operstate == "testing";
  const bool fault = !passing && (memory.wasUp || link.required);
  reading.condition = fault ? Condition::Critical : Condition::Warning;
  reading.reason = std::string(DownText(link)) + ", though it is switched on; up expected";
  if (!passing && !memory.wasUp) {
    reading.reason += "; never up since reading began";
  }
  reading.advice = memory.wasUp || link.required || passing
                       ? "look at the cable, the port of the switch and the transceiver"
                       : "plug the cable in, or switch the link off (ip link set " + link.name +
                             " down) when it is not used";
}

void TellSwitchedOff(Reading& reading, const LinkFacts& link) {
  reading.reason = "switched off by the administrator";
  if (link.required) {
    reading.condition = Condition::Critical;
    reading.reason += ", though it is named as required";
    reading.advice = "switch it on: ip link set " + link.name + " up";
  } else {
    reading.quality = Quality::Inactive;
  }
}

}  // namespace

bool IsUsable(const LinkFacts& link) {
  if (!link.adminUp || (link.carrier && !*link.carrier)) {
    return false;
  }
  return link.operstate == "up" || link.operstate == "unknown";
}

Reading JudgeLink(const LinkFacts& link, LinkMemory& memory) {
  Reading reading;
  reading.objectClass = ObjectClass::NetworkLink;
  reading.id = link.name;
  reading.name = link.name;
  reading.quality = Quality::Good;
  reading.customerServiceable = true;
  reading.mayGo = link.isVirtual && !link.required;
  if (IsUsable(link)) {
    memory.wasUp = true;
    if (link.speed && *link.speed > 0 && *link.speed <= kFastest) {
      reading.measurement = Measurement{static_cast<double>(*link.speed) * 1e6, Unit::BitPerSecond, {}};
    }
    return reading;
  }
  if (link.adminUp) {
    JudgeDown(reading, link, memory);
  } else {
    TellSwitchedOff(reading, link);
  }
  return reading;
}

Reading JudgeBond(const LinkFacts& bond, std::uint32_t minLinks, const std::vector<LinkFacts>& members,
                  std::vector<Reading>& links, LinkMemory& memory) {
  Redundancy group{bond.name, 0, std::max(minLinks, 1U), 0};
  std::string missing;
  for (const LinkFacts& member : members) {
    const bool works = IsUsable(member) && member.worksInBond;
    group.present += works ? 1 : 0;
    if (!works) {
      missing += (missing.empty() ? "" : ", ") + member.name;
    }
  }
  memory.members = std::max(memory.members, static_cast<std::uint32_t>(members.size()));
  group.members = memory.members;
  for (Reading& link : links) {
    if (std::ranges::find(members, link.id, &LinkFacts::name) != members.end()) {
      link.redundancy = group;
    }
  }

  Reading reading;
  reading.objectClass = ObjectClass::NetworkBond;
  reading.id = bond.name;
  reading.name = bond.name;
  reading.customerServiceable = true;
  reading.redundancy = group;
  reading.quality = Quality::Good;
  if (!bond.adminUp) {
    TellSwitchedOff(reading, bond);
    return reading;
  }
  reading.measurement = Measurement{static_cast<double>(group.present), Unit::Count, {}};
  if (group.present >= group.members && group.present >= group.needed) {
    return reading;
  }
  reading.condition = group.present >= group.needed ? Condition::Warning : Condition::Critical;
  reading.reason = Format("%u of %u links work, %u expected", group.present, group.members,
                          std::max(group.members, group.needed));
  if (!missing.empty()) {
    reading.reason += "; down: " + missing;
  }
  if (members.size() < group.members) {
    reading.reason +=
        Format("; %u taken out of the bond", group.members - static_cast<std::uint32_t>(members.size()));
  }
  reading.advice = "look at the cable, the port of the switch and the transceiver of what is down";
  return reading;
}

}  // namespace emstatus::host
