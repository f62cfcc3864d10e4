#include <gtest/gtest.h>
#include <poll.h>

#include <cerrno>

#include "host/providers/MdLayout.h"
#include "host/providers/MdProvider.h"
#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;

TEST(MdTexts, DisksTolerancesProgress) {
  EXPECT_EQ(ParseRaidDisks("11 (10)"), 10u);
  EXPECT_EQ(ParseRaidDisks("3 (4)"), 3u);
  EXPECT_EQ(ParseRaidDisks("4"), 4u);
  EXPECT_EQ(ParseRaidDisks(""), std::nullopt);
  EXPECT_EQ(ParseRaidDisks("many"), std::nullopt);
  const struct {
    const char* level;
    std::uint32_t disks;
    const char* layout;
    std::uint32_t tolerated;
  } rows[] = {{"raid0", 4, "", 0},     {"linear", 2, "", 0},      {"raid1", 2, "0", 1},
              {"raid1", 3, "0", 2},    {"raid5", 4, "2", 1},      {"raid6", 6, "2", 2},
              {"raid10", 4, "258", 1}, {"raid10", 4, "0x103", 2}, {"raid10", 4, "513", 1},
              {"raid1", 0, "", 0}};
  for (const auto& row : rows) {
    EXPECT_EQ(ToleratedLosses(row.level, row.disks, row.layout), row.tolerated) << row.level << row.layout;
  }
  const struct {
    const char* layout;
    std::vector<bool> inSync;
    bool lost;
  } mirrors[] = {{"258", {true, false, false, true}, false},
                 {"258", {true, true, false, false}, true},
                 {"258", {false, true, true, false, true}, false},
                 {"258", {false, true, true, true, false}, true},
                 {"513", {false, true, true, false}, true},
                 {"513", {false, true, false, true}, false},
                 {"0x103", {false, false, true}, false}};
  for (const auto& row : mirrors) {
    EXPECT_EQ(IsDataLost("raid10", row.layout, row.inSync), row.lost) << row.layout << row.inSync.size();
  }
  EXPECT_EQ(ParseProgress("100 / 400"), 25);
  for (const char* none : {"none", "delayed", "", "5 / 0", "9 / 4"}) {
    EXPECT_EQ(ParseProgress(none), std::nullopt) << none;
  }
}

// An array of `states`, one a member; "@2" behind a state is its slot.
MachineFolder::FileTable Array(const std::string& level, const std::string& disks,
                               const MachineFolder::FileTable& attributes,
                               const std::vector<std::string>& states) {
  const std::string folder = "/sys/block/md0/md/";
  MachineFolder::FileTable files = {{folder + "array_state", "clean\n"},
                                    {folder + "level", level + "\n"},
                                    {folder + "raid_disks", disks + "\n"}};
  for (const auto& [name, text] : attributes) {
    files.push_back({folder + name, text + "\n"});
  }
  for (std::size_t at = 0; at < states.size(); ++at) {
    const std::string member = folder + "dev-sd" + static_cast<char>('a' + at);
    const std::size_t slot = states[at].find('@');
    files.push_back({member + "/state", states[at].substr(0, slot) + "\n"});
    if (slot != std::string::npos) {
      files.push_back({member + "/slot", states[at].substr(slot + 1) + "\n"});
    }
    files.push_back({member + "/errors", "0\n"});
  }
  return files;
}

TEST(MdArrays, StatesAndRedundancyLeft) {
  const MachineFolder::FileTable idle = {{"degraded", "0"}, {"sync_action", "idle"}};
  const struct {
    MachineFolder::FileTable files;
    const char* line;
  } rows[] = {
      {Array("raid1", "2", idle, {"in_sync", "in_sync,writemostly"}), "md0 good 2"},
      {Array("raid0", "2", {}, {"in_sync", "in_sync"}), "md0 good 2"},
      {Array("raid1", "2", {{"degraded", "0"}, {"sync_action", "check"}, {"sync_completed", "1 / 4"}},
             {"in_sync", "in_sync"}),
       "md0 good 2: check running, 25.0 % done"},
      {Array("raid1", "2", {{"degraded", "0"}, {"sync_action", "resync"}, {"sync_completed", "delayed"}},
             {"in_sync", "in_sync"}),
       "md0 warning 2: not redundant until its resync has ended, waits for another array"},
      {Array("raid1", "2", {{"degraded", "1"}, {"sync_action", "idle"}}, {"in_sync"}),
       "md0 critical 1: 1 of 2 members in sync, 2 expected; no redundancy is left; not rebuilding"},
      {Array("raid6", "4", {{"degraded", "1"}, {"sync_action", "idle"}},
             {"in_sync", "in_sync", "in_sync", "faulty"}),
       "md0 warning 3: 3 of 4 members in sync, 4 expected; faulty: sdd; 1 more may fail; not rebuilding"},
      {Array("raid5", "3", {{"degraded", "1"}, {"sync_action", "recover"}, {"sync_completed", "1 / 2"}},
             {"in_sync", "in_sync", "spare"}),
       "md0 warning 2: 2 of 3 members in sync, 3 expected; rebuilding (recover), 50.0 % done"},
      {Array("raid5", "3", {{"degraded", "2"}, {"sync_action", "recover"}}, {"in_sync"}),
       "md0 critical 1: 1 of 3 members in sync, 3 expected; more are missing than it can lose"},
      // A member was taken out and the kernel's own count is behind.
      {Array("raid1", "2", idle, {"in_sync"}),
       "md0 critical 1: 1 of 2 members in sync, 2 expected; no redundancy is left; not rebuilding"},
      {Array("raid5", "11 (10)", {{"degraded", "0"}, {"sync_action", "reshape"}},
             {"in_sync", "in_sync", "in_sync", "in_sync", "in_sync", "in_sync", "in_sync", "in_sync",
              "in_sync", "in_sync", "in_sync"}),
       "md0 good 10: reshape running"},
      {Array("raid1", "2", {{"array_state", "inactive"}}, {"spare"}),
       "md0 critical 0: the array is inactive, active expected; 0 of 2 members in sync"},
      {Array("raid0", "2", {{"array_state", "broken"}}, {"in_sync", "faulty"}),
       "md0 critical 1: the array is broken, active expected; 1 of 2 members in sync; faulty: sdb"},
      {Array("", "", {{"array_state", "inactive"}, {"metadata_version", "external:imsm"}},
             {"spare", "spare"}),
       "md0 inactive: a container: its disks are told with the arrays in it"},
      {Array("raid5", "3", {{"degraded", "1"}, {"sync_action", "resync"}, {"sync_completed", "1 / 2"}},
             {"in_sync@0", "in_sync@2"}),
       "md0 critical 2: 2 of 3 members in sync, 3 expected; nothing in slot 1; no redundancy is left; not "
       "rebuilding, but at resync, 50.0 % done"},
      {Array("raid6", "4", {{"degraded", "1"}, {"sync_action", "frozen"}},
             {"in_sync@0", "in_sync@1", "in_sync@3", "spare@none"}),
       "md0 warning 3: 3 of 4 members in sync, 4 expected; nothing in slot 2; 1 more may fail; not "
       "rebuilding: that was stopped by hand (sync_action is frozen)"},
      // Both copies of one half, and one copy of each half.
      {Array("raid10", "4", {{"layout", "258"}, {"degraded", "2"}, {"sync_action", "idle"}},
             {"in_sync@0", "in_sync@1"}),
       "md0 critical 2: 2 of 4 members in sync, 4 expected; nothing in slot 2, 3; more are missing than it can lose"},
      {Array("raid10", "4", {{"layout", "258"}, {"degraded", "2"}, {"sync_action", "idle"}},
             {"in_sync@0", "in_sync@3"}),
       "md0 critical 2: 2 of 4 members in sync, 4 expected; nothing in slot 1, 2; no redundancy is left; not "
       "rebuilding"},
      // A replacement in the slot of the one that it replaces is no second member.
      {Array("raid1", "2", {{"degraded", "1"}, {"sync_action", "idle"}},
             {"in_sync@0", "in_sync,replacement@0"}),
       "md0 critical 1: 1 of 2 members in sync, 2 expected; nothing in slot 1; no redundancy is left; not "
       "rebuilding"},
      {Array("raid5", "3", {{"degraded", "0"}, {"sync_action", "idle"}, {"consistency_policy", "journal"}},
             {"in_sync@0", "in_sync@1", "in_sync@2", "faulty,journal@journal"}),
       "md0 critical 3: its journal is missing: it cannot be written"},
      {Array("raid6", "2", {{"mismatch_cnt", "8"}, {"last_sync_action", "check"}}, {"in_sync", "in_sync"}),
       "md0 warning 2: 8 sectors did not match in the last check, 0 expected"},
      {Array("raid1", "2", {{"mismatch_cnt", "8"}, {"last_sync_action", "check"}}, {"in_sync", "in_sync"}),
       "md0 good 2: 8 sectors did not match in the last check"},
      {Array("raid5", "2", {{"mismatch_cnt", "8"}, {"last_sync_action", "repair"}}, {"in_sync", "in_sync"}),
       "md0 good 2: 8 sectors did not match in the last repair and were mended"},
      {Array("raid1", "2", {{"array_state", "read-auto"}, {"degraded", "0"}, {"sync_action", "idle"}},
             {"in_sync", "in_sync"}),
       "md0 good 2: read-only (read-auto)"},
  };
  for (const auto& row : rows) {
    MachineFolder machine(row.files);
    MdProvider provider(machine.Factory(), kPatient);
    EXPECT_EQ(Line(ReadAt(provider, 0)[0]), row.line);
  }
}

TEST(MdArrays, MembersErrorsAndDescriptorsToWatch) {
  MachineFolder machine(Array("raid6", "5", {{"degraded", "1"}, {"sync_action", "idle"}},
                              {"in_sync@0", "in_sync@1", "in_sync,want_replacement@2", "in_sync,someday@3",
                               "spare@none", "faulty,in_sync,blocked@4", "spare,replacement@2"}));
  MdProvider provider(machine.Factory(), kPatient);
  EXPECT_EQ(Lines(ReadAt(provider, 0)).size(), 8u);
  machine.Write({{"/sys/block/md0/md/dev-sdb/state", "faulty"}, {"/sys/block/md0/md/dev-sdb/slot", "none"}});
  auto readings = ReadAt(provider, 10);
  EXPECT_EQ(readings[0].advice, "replace sdb (slot 1) and add the new disk: mdadm --add");
  EXPECT_EQ(readings[2].advice, "replace the disk sdb (slot 1), then mdadm --remove and --add");
  readings.erase(readings.begin());
  EXPECT_EQ(Lines(readings),
            (Texts{"md0/sda good", "md0/sdb critical: the array has thrown it out as faulty",
                   "md0/sdc warning: the array wants it replaced after errors", "md0/sdd good",
                   "md0/sde good: spare",
                   "md0/sdf warning: blocked: writing to the array waits until its failure was noted",
                   "md0/sdg good: takes the place of another, not in sync yet"}));
  std::vector<pollfd> watched;
  provider.Watch(watched);
  EXPECT_EQ(watched.size(), 3u + 7u);
  EXPECT_EQ(poll(watched.data(), watched.size(), 0), 0) << "nothing has changed";

  machine.Write({{"/sys/block/md0/md/dev-sda/errors", "3"}});
  EXPECT_EQ(Line(ReadAt(provider, 20)[1]),
            "md0/sda warning: 3 new read errors, mended from other members; 0 expected");
  EXPECT_TRUE(provider.Confirm(ObjectClass::RaidMember, "md0/sda"));
  machine.Fail("/sys/block/md0/md/array_state", EIO);
  const auto lines = Lines(ReadAt(provider, 30));
  EXPECT_EQ(lines[0], "md0 sensor-fault: cannot be read: array_state: Input/output error");
  EXPECT_EQ(lines[1], "md0/sda good");
  machine.Fail("/sys/block/md0/md/array_state", 0);
  machine.Write({{"/sys/block/md0/md/array_state", "clear"}});
  EXPECT_TRUE(ReadAt(provider, 40).empty()) << "a name whose array was stopped";
  machine.Remove("/sys/block/md0");
  EXPECT_TRUE(ReadAt(provider, 50).empty());
}

TEST(MdArrays, ASpareThatIsGoneAndMetadataThatNobodyKeeps) {
  MachineFolder machine(Array("raid1", "2", {{"degraded", "0"}, {"sync_action", "idle"}},
                              {"in_sync@0", "in_sync@1", "spare@none"}));
  MdProvider provider(machine.Factory(), kPatient);
  EXPECT_EQ(Line(ReadAt(provider, 0)[0]), "md0 good 2");
  machine.Remove("/sys/block/md0/md/dev-sdc");
  EXPECT_EQ(Line(ReadAt(provider, 10)[0]),
            "md0 warning 2: whole, but 2 of its 3 devices are left: a spare is gone");
  EXPECT_TRUE(provider.Confirm(ObjectClass::RaidArray, "md0"));
  EXPECT_EQ(Line(ReadAt(provider, 20)[0]), "md0 good 2");
  machine.Write({{"/sys/block/md0/md/metadata_version", "external:/md127/0"},
                 {"/sys/block/md0/md/array_state", "write-pending"}});
  EXPECT_EQ(Line(ReadAt(provider, 30)[0]), "md0 good 2");
  EXPECT_EQ(Line(ReadAt(provider, 50)[0]),
            "md0 warning 2: writing has waited for 20 s for the program that keeps its metadata");
}

TEST(MdArrays, TheDisksOfAContainerAreToldOnce) {
  MachineFolder machine(Array("raid1", "2",
                              {{"metadata_version", "external:-md127/0"}, {"sync_action", "idle"}},
                              {"in_sync@0", "in_sync@1"}));
  const std::string folder = "/sys/block/md127/md/";
  machine.Write({{folder + "array_state", "inactive"}, {folder + "metadata_version", "external:imsm"}});
  for (const char* disk : {"sda", "sdb", "sdc"}) {
    machine.Write({{folder + "dev-" + disk + "/state", "spare"}});
  }
  MdProvider provider(machine.Factory(), kPatient);
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"md0 good 2", "md0/sda good", "md0/sdb good",
                   "md127 inactive: a container: its disks are told with the arrays in it",
                   "md127/sdc inactive: in the container, but in none of its arrays"}));
}

TEST(MdArrays, OneThatHangsIsLateAloneAndIsNotWatched) {
  MachineFolder machine(Array("raid1", "2", {{"sync_action", "idle"}}, {"in_sync@0", "in_sync@1"}));
  machine.Write({{"/sys/block/md1/md/array_state", "clean"}, {"/sys/block/md1/md/level", "raid0"}});
  MdProvider provider(machine.Factory(), kImpatient);
  const Texts good = {"md0 good 2", "md0/sda good", "md0/sdb good", "md1 good"};
  EXPECT_EQ(ReadUntil(provider, 0, good), good);
  machine.Hang("/sys/block/md0/md/array_state");
  ReadAt(provider, 10);
  const std::string late = " late: no answer for 40 s; the device or its driver may hang";
  const Texts expected = {"md0" + late, "md0/sda" + late, "md0/sdb" + late, "md1 good"};
  EXPECT_EQ(ReadUntil(provider, 40, expected), expected);
  std::vector<pollfd> watched;
  provider.Watch(watched);
  EXPECT_EQ(watched.size(), 1u) << "what has not answered would call for it again and again";
}

}  // namespace
}  // namespace emstatus::test
