#include "host/providers/MdJudge.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "host/providers/Blame.h"
#include "host/providers/MdLayout.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

/// What follows for an array from its members.
struct Standing {
  /// Members that it needs; absent when it does not tell.
  std::optional<std::uint32_t> disks;
  std::uint32_t missing = 0;
  std::uint32_t tolerated = 0;
  bool isDataLost = false;
  /// The members that were thrown out, and the slots that nobody is in, for people; empty without any.
  std::string thrownOut;
  std::string emptySlots;

  std::string CountText() const {
    return Format("%u of %u members in sync", disks.value_or(0) - missing, disks.value_or(0));
  }
};

std::string SlotText(const std::string& member, const MdMemory& memory) {
  const auto slot = memory.slots.find(member);
  return member + (slot == memory.slots.end() ? "" : Format(" (slot %u)", slot->second));
}

std::string ProgressText(const MdArray& array) {
  const auto progress = ParseProgress(array.completed);
  if (progress) {
    return Format(", %.1f %% done", *progress);
  }
  return array.completed == "delayed" ? ", waits for another array" : "";
}

// Which slots hold their part of the data; absent when the members do not tell all their slots.
std::optional<std::vector<bool>> SlotsInSync(const MdArray& array, std::uint32_t disks) {
  std::vector<bool> slots(disks, false);
  for (const MdMember& member : array.members) {
    if (member.error != 0 || (member.IsInSync() && !member.slot)) {
      return std::nullopt;
    }
    if (member.IsInSync() && *member.slot < disks) {
      slots[*member.slot] = true;
    }
  }
  return slots;
}

// The kernel's count, and what is missed by counting ourselves: a member that was taken out leaves no trace
// of its own.
void CountMissing(Standing& standing, const MdArray& array) {
  const std::uint32_t disks = *standing.disks;
  if (array.degraded && *array.degraded > 0) {
    standing.missing = static_cast<std::uint32_t>(std::min<std::int64_t>(*array.degraded, disks));
  }
  const bool allRead =
      std::ranges::all_of(array.members, [](const MdMember& member) { return member.error == 0; });
  const auto slots = SlotsInSync(array, disks);
  const auto inSync = static_cast<std::uint32_t>(
      slots ? std::ranges::count(*slots, true) : std::ranges::count_if(array.members, &MdMember::IsInSync));
  if (allRead && !array.members.empty() && inSync < disks) {
    standing.missing = std::max(standing.missing, disks - inSync);
  }
  standing.isDataLost = slots && inSync + standing.missing == disks
                            ? IsDataLost(array.level, array.layout, *slots)
                            : standing.missing > standing.tolerated;
}

void NameMissing(Standing& standing, const MdArray& array, const MdMemory& memory) {
  std::set<std::uint32_t> taken;
  // Without slots of the others, none can be said to be empty.
  bool allTold = std::ranges::any_of(array.members, [](const MdMember& one) { return one.slot.has_value(); });
  for (const MdMember& member : array.members) {
    const auto old = memory.slots.find(member.name);
    if (member.IsThrownOut()) {
      AddToList(standing.thrownOut, SlotText(member.name, memory));
      if (old != memory.slots.end()) {
        taken.insert(old->second);
      }
    }
    if (member.slot) {
      taken.insert(*member.slot);
    }
    allTold = allTold && (!member.IsInSync() || member.slot);
  }
  for (std::uint32_t slot = 0; allTold && slot < standing.disks.value_or(0); ++slot) {
    if (!taken.contains(slot)) {
      AddToList(standing.emptySlots, std::to_string(slot));
    }
  }
}

Standing StandingOf(const MdArray& array, const MdMemory& memory) {
  Standing standing;
  standing.disks = ParseRaidDisks(array.disks);
  standing.tolerated = ToleratedLosses(array.level, standing.disks.value_or(0), array.layout);
  if (standing.disks) {
    CountMissing(standing, array);
  }
  if (standing.missing > 0) {
    NameMissing(standing, array, memory);
  }
  return standing;
}

std::string MissingText(const Standing& standing) {
  return (standing.thrownOut.empty() ? "" : "; faulty: " + standing.thrownOut) +
         (standing.emptySlots.empty() ? "" : "; nothing in slot " + standing.emptySlots);
}

std::string ReplaceAdvice(const Standing& standing) {
  if (!standing.thrownOut.empty()) {
    return "replace " + standing.thrownOut + " and add the new disk: mdadm --add";
  }
  return standing.emptySlots.empty() ? "replace the failed disk and add it: mdadm --add"
                                     : "add a disk for slot " + standing.emptySlots + ": mdadm --add";
}

void JudgeDegraded(Reading& reading, const MdArray& array, const Standing& standing) {
  const std::string have =
      standing.CountText() + Format(", %u expected", *standing.disks) + MissingText(standing);
  if (standing.isDataLost) {
    Blame(reading, Condition::Critical, have + "; more are missing than it can lose",
          "stop using it; look after the disks, then mdadm --assemble, or restore a backup");
    return;
  }
  if (array.action == "recover") {
    Blame(reading, Condition::Warning, have + "; rebuilding (recover)" + ProgressText(array),
          "wait for the end of the rebuild; take no other disk out");
    return;
  }
  const bool isUsedUp = standing.missing >= standing.tolerated;
  std::string reason = have +
                       (isUsedUp ? "; no redundancy is left"
                                 : Format("; %u more may fail", standing.tolerated - standing.missing)) +
                       "; not rebuilding";
  std::string advice = ReplaceAdvice(standing);
  if (array.action == "frozen") {
    reason += ": that was stopped by hand (sync_action is frozen)";
    advice = "write idle to sync_action; " + advice;
  } else if (!array.action.empty() && array.action != "idle") {
    reason += ", but at " + array.action + ProgressText(array);
  }
  Blame(reading, isUsedUp ? Condition::Critical : Condition::Warning, std::move(reason), std::move(advice));
}

// Whether a complete array works as it should; the first thing that is wrong.
bool FindsFault(Reading& reading, const MdArray& array, MdMemory& memory, MdMemory::Clock::time_point now) {
  const auto isJournal = [](const MdMember& member) { return member.Is("journal") && !member.IsThrownOut(); };
  const bool isPending = array.state == "write-pending" && array.metadata.starts_with("external:");
  memory.pendingSince = isPending ? std::optional(memory.pendingSince.value_or(now)) : std::nullopt;
  if (array.state == "suspended") {
    Blame(reading, Condition::Warning, "the array is suspended: all access to it waits",
          "resume it, or wait for who suspended it");
  } else if (array.policy == "journal" && std::ranges::none_of(array.members, isJournal)) {
    Blame(reading, Condition::Critical, "its journal is missing: it cannot be written",
          "replace the journal device: mdadm --add-journal");
  } else if (isPending && now - *memory.pendingSince >= kMdPendingLimit) {
    Blame(reading, Condition::Warning,
          "writing has waited for " +
              SpanText(std::chrono::duration<double>(now - *memory.pendingSince).count()) +
              " for the program that keeps its metadata",
          "look whether mdmon runs for " + std::string(array.ContainerName()));
  } else if (array.action == "resync") {
    Blame(reading, Condition::Warning, "not redundant until its resync has ended" + ProgressText(array),
          "wait for its end");
  } else if (array.action == "frozen") {
    Blame(reading, Condition::Warning,
          "its rebuilding was stopped by hand (sync_action is frozen), idle expected",
          "write idle to sync_action");
  }
  return reading.condition != Condition::Good;
}

// With parity, what does not match is damaged; mirrors of swap and of files being written may differ.
void JudgeMismatches(Reading& reading, const MdArray& array) {
  if (array.mismatches.value_or(0) <= 0 || array.lastAction == "resync" || array.lastAction == "recover") {
    return;
  }
  const std::string found =
      Format("%lld sectors did not match in the last ", static_cast<long long>(*array.mismatches));
  const bool hasParity = array.level == "raid4" || array.level == "raid5" || array.level == "raid6";
  if (array.lastAction == "repair") {
    reading.reason = found + "repair and were mended";
  } else if (hasParity) {
    Blame(reading, Condition::Warning, found + "check, 0 expected",
          "look at the SMART data of its disks; compare its data with a backup before a repair");
  } else {
    reading.reason = found + "check";
  }
}

void JudgeDevices(Reading& reading, const MdArray& array, MdMemory& memory) {
  std::size_t devices = 0;
  for (const MdMember& member : array.members) {
    if (member.error != 0) {
      return;
    }
    devices += member.IsThrownOut() ? 0 : 1;
  }
  memory.mostDevices = std::max(memory.mostDevices, devices);
  if (devices < memory.mostDevices && reading.condition == Condition::Good) {
    Blame(reading, Condition::Warning,
          Format("whole, but %zu of its %zu devices are left: a spare is gone", devices, memory.mostDevices),
          "add a spare: mdadm --add; or confirm that none is wanted");
  }
}

void NoteAction(Reading& reading, const MdArray& array) {
  if (!array.action.empty() && array.action != "idle") {
    reading.reason = array.action + " running" + ProgressText(array);
  } else if (reading.reason.empty() && (array.state == "readonly" || array.state == "read-auto")) {
    reading.reason = "read-only (" + array.state + ")";
  }
}

void JudgeWhole(Reading& reading, const MdArray& array, MdMemory& memory, MdMemory::Clock::time_point now) {
  if (!FindsFault(reading, array, memory, now)) {
    JudgeMismatches(reading, array);
    JudgeDevices(reading, array, memory);
  }
  if (reading.condition == Condition::Good) {
    NoteAction(reading, array);
  }
}

}  // namespace

Reading JudgeArray(const MdArray& array, MdMemory& memory, MdMemory::Clock::time_point now) {
  Reading reading;
  reading.objectClass = ObjectClass::RaidArray;
  reading.id = reading.name = array.name;
  if (array.error != 0) {
    SetUnread(reading, "array_state", array.error);
    return reading;
  }
  if (array.IsContainer()) {
    SetUnknown(reading, Quality::Inactive, "a container: its disks are told with the arrays in it");
    return reading;
  }
  for (const MdMember& member : array.members) {
    if (member.slot) {
      memory.slots[member.name] = *member.slot;
    }
  }
  reading.quality = Quality::Good;
  reading.customerServiceable = true;
  const Standing standing = StandingOf(array, memory);
  if (standing.disks) {
    const std::uint32_t present = *standing.disks - standing.missing;
    reading.measurement = Measurement{static_cast<double>(present), Unit::Count, {}};
    if (standing.tolerated > 0) {
      // A raid10 may do its work with fewer than it always can.
      const std::uint32_t needed = *standing.disks - standing.tolerated;
      reading.redundancy = Redundancy{array.name, *standing.disks,
                                      standing.isDataLost ? needed : std::min(needed, present), present};
    }
  }
  if (array.state == "inactive" || array.state == "broken") {
    Blame(reading, Condition::Critical,
          "the array is " + array.state + ", active expected" +
              (standing.disks ? "; " + standing.CountText() : "") + MissingText(standing),
          "look why it does not run: mdadm --detail, then mdadm --assemble or --run");
  } else if (standing.missing > 0) {
    JudgeDegraded(reading, array, standing);
  } else {
    JudgeWhole(reading, array, memory, now);
  }
  return reading;
}

Reading JudgeMember(const MdArray& array, const MdMember& member, MdMemory& memory) {
  Reading reading;
  reading.objectClass = ObjectClass::RaidMember;
  reading.id = array.name + "/" + member.name;
  reading.name = member.name + " (" + array.name + ")";
  reading.customerServiceable = true;
  // Whether enough members are left is the array's to tell.
  reading.mayGo = true;
  if (member.error != 0) {
    SetUnread(reading, "state", member.error);
    return reading;
  }
  const std::int64_t errors = member.errors.value_or(0);
  std::int64_t& old = memory.oldErrors.emplace(member.name, errors).first->second;
  // They begin anew when the member is added again.
  old = std::min(old, errors);
  if (array.IsContainer()) {
    SetUnknown(reading, Quality::Inactive, "in the container, but in none of its arrays");
    return reading;
  }
  reading.quality = Quality::Good;
  if (member.IsThrownOut()) {
    Blame(reading, Condition::Critical, "the array has thrown it out as faulty",
          "replace the disk " + SlotText(member.name, memory) + ", then mdadm --remove and --add");
  } else if (member.Is("write_error") || member.Is("want_replacement")) {
    Blame(reading, Condition::Warning, "the array wants it replaced after errors",
          "add a spare: it takes over without a loss of redundancy");
  } else if (member.Is("blocked")) {
    Blame(reading, Condition::Warning, "blocked: writing to the array waits until its failure was noted",
          "look at the kernel log for its errors");
  } else if (errors > old) {
    Blame(reading, Condition::Warning,
          Format("%lld new read errors, mended from other members; 0 expected",
                 static_cast<long long>(errors - old)),
          "look at the disk's SMART data; plan to replace it");
  } else if (member.Is("replacement") && !member.IsInSync()) {
    reading.reason = "takes the place of another, not in sync yet";
  } else if (member.Is("spare")) {
    reading.reason = member.slot || array.action == "recover" ? "not in sync yet" : "spare";
  } else if (!member.IsInSync() && !member.Is("journal")) {
    reading.reason = "not in sync";
  }
  return reading;
}

}  // namespace emstatus::host
