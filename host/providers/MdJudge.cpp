#include "host/providers/MdJudge.h"

#include <algorithm>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

bool Is(const MdMember& member, std::string_view state) {
  return std::ranges::find(member.states, state) != member.states.end();
}

bool IsRebuilding(const MdArray& array) {
  return array.action == "recover" || array.action == "resync" || array.action == "reshape";
}

std::string ProgressText(const MdArray& array) {
  const auto progress = ParseProgress(array.completed);
  if (progress) {
    return Format(", %.1f %% done", *progress);
  }
  return array.completed == "delayed" ? ", waits for another array" : "";
}

// The kernel's count, and what is missed by counting ourselves: a member that was taken out leaves no trace
// of its own.
std::uint32_t Missing(const MdArray& array, std::uint32_t disks) {
  std::uint32_t missing =
      array.degraded && *array.degraded > 0 ? static_cast<std::uint32_t>(*array.degraded) : 0;
  const auto inSync = static_cast<std::uint32_t>(
      std::ranges::count_if(array.members, [](const MdMember& member) { return Is(member, "in_sync"); }));
  const bool allRead =
      std::ranges::all_of(array.members, [](const MdMember& member) { return member.error == 0; });
  if (allRead && !array.members.empty() && inSync < disks) {
    missing = std::max(missing, disks - inSync);
  }
  return std::min(missing, disks);
}

std::string FaultyText(const MdArray& array) {
  std::string names;
  for (const MdMember& member : array.members) {
    if (Is(member, "faulty")) {
      names += (names.empty() ? "; faulty: " : ", ") + member.name;
    }
  }
  return names;
}

void Blame(Reading& reading, Condition condition, std::string reason, const char* advice) {
  reading.condition = condition;
  reading.reason = std::move(reason);
  reading.advice = advice;
}

void JudgeDegraded(Reading& reading, const MdArray& array, std::uint32_t disks, std::uint32_t missing,
                   std::uint32_t tolerated) {
  const std::string have =
      Format("%u of %u members in sync, %u expected", disks - missing, disks, disks) + FaultyText(array);
  if (missing > tolerated) {
    Blame(reading, Condition::Critical, have + "; more are missing than it can lose",
          "stop using it; look after the disks, then mdadm --assemble, or restore a backup");
  } else if (IsRebuilding(array)) {
    Blame(reading, Condition::Warning, have + "; rebuilding (" + array.action + ")" + ProgressText(array),
          "wait for the end of the rebuild; take no other disk out");
  } else {
    const bool isUsedUp = missing >= tolerated;
    Blame(reading, isUsedUp ? Condition::Critical : Condition::Warning,
          have + (isUsedUp ? "; no redundancy is left" : Format("; %u more may fail", tolerated - missing)) +
              "; not rebuilding",
          "replace the failed disk and add it: mdadm --add");
  }
}

void JudgeAction(Reading& reading, const MdArray& array) {
  if (array.action == "resync") {
    Blame(reading, Condition::Warning, "not redundant until its resync has ended" + ProgressText(array),
          "wait for its end");
  } else if (array.action == "frozen") {
    Blame(reading, Condition::Warning,
          "its rebuilding was stopped by hand (sync_action is frozen), idle expected",
          "write idle to sync_action");
  } else if (!array.action.empty() && array.action != "idle") {
    reading.reason = array.action + " running" + ProgressText(array);
  } else if (array.state == "readonly" || array.state == "read-auto") {
    reading.reason = "read-only (" + array.state + ")";
  }
}

bool IsContainer(const MdArray& array) {
  const bool isExternal =
      array.metadata.starts_with("external:") && !array.metadata.starts_with("external:/");
  return array.level == "container" || (isExternal && array.disks.empty());
}

}  // namespace

std::optional<std::uint32_t> ParseRaidDisks(std::string_view text) {
  std::optional<std::uint32_t> least;
  for (std::string_view word : Words(text)) {
    if (word.starts_with('(') && word.ends_with(')')) {
      word = word.substr(1, word.size() - 2);
    }
    const auto number = NumberAfter(word, "");
    if (!number) {
      return std::nullopt;
    }
    least = std::min(least.value_or(*number), *number);
  }
  return least;
}

std::uint32_t ToleratedLosses(std::string_view level, std::uint32_t disks, std::string_view layout) {
  if (disks == 0) {
    return 0;
  }
  if (level == "raid1" || level == "multipath") {
    return disks - 1;
  }
  if (level == "raid4" || level == "raid5") {
    return 1;
  }
  if (level == "raid6") {
    return 2;
  }
  if (level == "raid10") {
    const auto bits = static_cast<std::uint32_t>(ParseUnsigned(layout).value_or(0x102) & 0xFFFF);
    const std::uint32_t copies = std::max(bits & 0xFFU, 1U) * std::max(bits >> 8U, 1U);
    return std::min(copies, disks) - 1;
  }
  return 0;
}

std::optional<double> ParseProgress(std::string_view text) {
  const std::vector<std::string_view> words = Words(text, '/');
  const auto done = words.size() == 2 ? ParseUnsigned(words[0]) : std::nullopt;
  const auto all = words.size() == 2 ? ParseUnsigned(words[1]) : std::nullopt;
  if (!done || !all || *all == 0 || *done > *all) {
    return std::nullopt;
  }
  return 100 * static_cast<double>(*done) / static_cast<double>(*all);
}

Reading JudgeArray(const MdArray& array) {
  Reading reading;
  reading.objectClass = ObjectClass::RaidArray;
  reading.id = reading.name = array.name;
  if (array.error != 0) {
    SetUnread(reading, "array_state", array.error);
    return reading;
  }
  if (IsContainer(array)) {
    SetUnknown(reading, Quality::Inactive, "a container: its disks are told with the arrays in it");
    return reading;
  }
  reading.quality = Quality::Good;
  reading.customerServiceable = true;
  const auto disks = ParseRaidDisks(array.disks);
  const std::uint32_t tolerated = ToleratedLosses(array.level, disks.value_or(0), array.layout);
  const std::uint32_t missing = Missing(array, disks.value_or(0));
  if (disks) {
    reading.measurement = Measurement{static_cast<double>(*disks - missing), Unit::Count, {}};
    if (tolerated > 0) {
      reading.redundancy = Redundancy{array.name, *disks, *disks - tolerated, *disks - missing};
    }
  }
  if (array.state == "inactive" || array.state == "clear" || array.state == "broken") {
    Blame(reading, Condition::Critical,
          "the array is " + array.state + ", active expected" +
              (disks ? Format("; %u of %u members in sync", *disks - missing, *disks) : "") +
              FaultyText(array),
          "look why it does not run: mdadm --detail, then mdadm --assemble or --run");
  } else if (missing > 0) {
    JudgeDegraded(reading, array, *disks, missing, tolerated);
  } else if (array.state == "suspended") {
    Blame(reading, Condition::Warning, "the array is suspended: all access to it waits",
          "resume it, or wait for who suspended it");
  } else {
    JudgeAction(reading, array);
  }
  return reading;
}

Reading JudgeMember(const MdArray& array, const MdMember& member, std::int64_t oldErrors) {
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
  reading.quality = Quality::Good;
  const std::int64_t fresh = member.errors.value_or(0) - oldErrors;
  if (Is(member, "faulty")) {
    Blame(reading, Condition::Critical, "the array has thrown it out as faulty",
          "replace the disk, then mdadm --remove and --add");
  } else if (Is(member, "write_error") || Is(member, "want_replacement")) {
    Blame(reading, Condition::Warning, "the array wants it replaced after errors",
          "add a spare: it takes over without a loss of redundancy");
  } else if (Is(member, "blocked")) {
    Blame(reading, Condition::Warning, "blocked: writing to the array waits until its failure was noted",
          "look at the kernel log for its errors");
  } else if (fresh > 0) {
    Blame(
        reading, Condition::Warning,
        Format("%lld new read errors, mended from other members; 0 expected", static_cast<long long>(fresh)),
        "look at the disk's SMART data; plan to replace it");
  } else if (!Is(member, "in_sync") && !Is(member, "journal")) {
    reading.reason =
        Is(member, "spare") ? (IsRebuilding(array) ? "not in sync yet" : "spare") : "not in sync";
  }
  return reading;
}

}  // namespace emstatus::host
