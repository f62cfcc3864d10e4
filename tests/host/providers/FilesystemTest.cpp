#include <gtest/gtest.h>

#include <cerrno>

#include "host/providers/FilesystemProvider.h"
#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;

constexpr std::uint64_t kGiB = 1ULL << 30;

FilesystemRoom RoomOf(double freeShare, std::uint64_t inodesFree = 900) {
  FilesystemRoom room;
  room.size = 100 * kGiB;
  room.free = room.available = static_cast<std::uint64_t>(freeShare * 100) * kGiB;
  room.inodes = 1000;
  room.inodesFree = inodesFree;
  return room;
}

MachineFolder::FileTable Root(const std::string& mountOptions, const std::string& superOptions) {
  return {
      {"/proc/self/mountinfo", "27 1 254:0 / / " + mountOptions + " - ext4 /dev/vda " + superOptions + "\n"}};
}

TEST(Filesystems, RoomAndInodesByLimit) {
  const struct {
    FilesystemRoom room;
    const char* space;
    const char* inodes;
  } rows[] = {
      {RoomOf(0.5), "/ good 50.0 %", "/ good 10.0 %"},
      {RoomOf(0.08), "/ warning 92.0 %: 92.0 % used, less than 90 % expected; 8.0 GiB of 100.0 GiB left",
       "/ good 10.0 %"},
      {RoomOf(0.05), "/ critical 95.0 %: 95.0 % used, less than 90 % expected; 5.0 GiB of 100.0 GiB left",
       "/ good 10.0 %"},
      {RoomOf(0.5, 0), "/ good 50.0 %",
       "/ critical 100.0 %: 100.0 % used, less than 90 % expected; 0 of 1000 inodes left"},
      {{0, 0, 0, 0, 0}, "/ implausible: the filesystem says that its size is 0", ""},
  };
  for (const auto& row : rows) {
    MachineFolder machine(Root("rw", "rw"));
    machine.SetRoom("/", row.room);
    FilesystemProvider provider(machine.Factory(), {}, {}, kPatient);
    const auto lines = Lines(ReadAt(provider, 0));
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "/ good");
    EXPECT_EQ(lines[1], row.space);
    EXPECT_EQ(lines.size() > 2 ? lines[2] : "", row.inodes);
  }
}

TEST(Filesystems, ReservedBlocksAreNotFreeForUsers) {
  MachineFolder machine(Root("rw", "rw"));
  FilesystemRoom room = RoomOf(0.05);
  room.available = 0;
  machine.SetRoom("/", room);
  FilesystemProvider provider(machine.Factory(), {}, {}, kPatient);
  EXPECT_EQ(ReadAt(provider, 0)[1].measurement->value, 100);
}

TEST(Filesystems, FlipsToReadOnly) {
  MachineFolder machine(Root("rw", "rw"));
  machine.SetRoom("/", RoomOf(0.01));
  FilesystemProvider provider(machine.Factory(), {}, {}, kPatient);
  EXPECT_EQ(Line(ReadAt(provider, 0)[0]), "/ good");
  machine.Write(Root("rw", "ro"));
  auto readings = ReadAt(provider, 10);
  EXPECT_EQ(Line(readings[0]),
            "/ critical: mounted read-write, but the kernel made it read-only after an error");
  EXPECT_EQ(Line(readings[1]), "/ good 99.0 %") << "what cannot be written cannot fill up";
  machine.Write(Root("ro", "ro"));
  EXPECT_EQ(Line(ReadAt(provider, 20)[0]),
            "/ critical: turned read-only while it was watched, read-write expected");
  EXPECT_TRUE(provider.Confirm(ObjectClass::FilesystemHealth, "/"));
  EXPECT_EQ(Line(ReadAt(provider, 30)[0]), "/ good: mounted read-only");
  FilesystemProvider later(machine.Factory(), {}, {}, kPatient);
  EXPECT_EQ(Line(ReadAt(later, 0)[0]), "/ good: mounted read-only");
}

TEST(Filesystems, WhatIsReadOnlyJustHereIsJudgedAllTheSame) {
  // As a service sees a disk whose place is protected from it.
  MachineFolder machine(Root("ro", "rw"));
  machine.SetRoom("/", RoomOf(0.05));
  FilesystemProvider provider(machine.Factory(), {}, {}, kPatient);
  const auto lines = Lines(ReadAt(provider, 0));
  EXPECT_EQ(lines[0], "/ good: read-only at this mount point");
  EXPECT_EQ(lines[1], "/ critical 95.0 %: 95.0 % used, less than 90 % expected; 5.0 GiB of 100.0 GiB left");
  machine.Write(Root("ro", "ro"));
  EXPECT_EQ(Line(ReadAt(provider, 10)[0]),
            "/ critical: turned read-only while it was watched, read-write expected");
  machine.Write(Root("rw", "rw,shutdown"));
  EXPECT_EQ(Line(ReadAt(provider, 20)[0]),
            "/ critical: has shut itself down after an error: nothing can be read or written");
}

TEST(Filesystems, ErrorsAndMissingDevicesOfBtrfs) {
  MachineFolder machine("/proc/self/mountinfo", "27 1 0:30 /@ / rw - btrfs /dev/mapper/pool rw,subvol=/@\n");
  machine.SetRoom("/", {100, 50, 50, 0, 0});
  const std::string folder = "/sys/fs/btrfs/1234-5678/";
  const std::string none = "write_errs 0\nread_errs 0\nflush_errs 0\ncorruption_errs 0\ngeneration_errs 0\n";
  machine.Write({{"/sys/fs/btrfs/features/raid1c34", "0"},
                 {folder + "devices/pool/size", "1"},
                 {folder + "devinfo/1/error_stats", none},
                 {folder + "devinfo/2/error_stats", none},
                 {folder + "devinfo/2/missing", "0"}});
  FilesystemProvider provider(machine.Factory(), {}, {}, kPatient);
  EXPECT_EQ(Lines(ReadAt(provider, 0)), (Texts{"/ good", "/ good 50.0 %"}));
  machine.Write({{folder + "devinfo/2/error_stats", "write_errs 1\nread_errs 0\ncorruption_errs 2\n"}});
  EXPECT_EQ(Line(ReadAt(provider, 10)[0]), "/ warning: 3 device errors recorded, 0 expected, 3 of them new");
  machine.Write({{folder + "devinfo/2/missing", "1"}});
  EXPECT_EQ(Line(ReadAt(provider, 20)[0]), "/ critical: 1 of its devices are missing, none expected");
}

TEST(Filesystems, WhatIsMountedOnDemandIsLeftAlone) {
  const std::string place = "5 0 0:5 / /boot/efi rw - autofs systemd-1 rw\n";
  MachineFolder machine("/proc/self/mountinfo", place.c_str());
  machine.SetRoom("/boot/efi", {100, 50, 50, 0, 0});
  FilesystemProvider provider(machine.Factory(), {"/boot/efi//", "/boot/efi"}, {}, kPatient);
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"/boot/efi inactive: mounted when it is used, not in use now"}));
  EXPECT_EQ(machine.TakeReads("/boot/efi"), 0) << "looking would mount it";
  machine.Write({{"/proc/self/mountinfo", place + "6 5 8:1 / /boot/efi rw - vfat /dev/sda1 rw\n"}});
  const auto readings = ReadAt(provider, 10);
  EXPECT_EQ(Lines(readings), (Texts{"/boot/efi good", "/boot/efi good 50.0 %"}));
  EXPECT_TRUE(readings[0].mayGo);
}

TEST(Filesystems, RecordedErrors) {
  MachineFolder machine(Root("rw", "rw"));
  machine.SetRoom("/", RoomOf(0.5));
  machine.Write({{"/sys/dev/block/254:0", "-> /sys/devices/virtual/block/dm-3"},
                 {"/sys/fs/ext4/dm-3/errors_count", "2\n"},
                 {"/sys/fs/ext4/dm-3/last_error_time", "0\n"}});
  FilesystemProvider provider(machine.Factory(), {}, {}, kPatient);
  EXPECT_EQ(Line(ReadAt(provider, 0)[0]), "/ warning: 2 filesystem errors recorded, 0 expected");
  machine.Write({{"/sys/fs/ext4/dm-3/errors_count", "5"},
                 {"/sys/fs/ext4/dm-3/last_error_time", std::to_string(24L * 365 * 55 * 3600 - 590)}});
  EXPECT_EQ(Line(ReadAt(provider, 10)[0]),
            "/ critical: 5 filesystem errors recorded, 0 expected, 3 of them new; the last 10 min ago");
  machine.Write({{"/sys/fs/ext4/dm-3/errors_count", "0"}});
  EXPECT_EQ(Line(ReadAt(provider, 20)[0]), "/ good");
}

TEST(Filesystems, ADeadNetworkMountBlocksNothing) {
  MachineFolder machine("/proc/self/mountinfo",
                        "1 0 0:9 / /aaa rw - nfs4 server:/x rw\n2 0 8:1 / / rw - ext4 /dev/sda1 rw\n");
  machine.SetRoom("/", RoomOf(0.5));
  machine.SetRoom("/aaa", RoomOf(0.5));
  machine.Hang("/aaa");
  FilesystemProvider provider(machine.Factory(), {"/aaa"}, {}, kImpatient);
  for (const int second : {0, 40}) {
    const std::string late =
        "/aaa late: no answer for " + std::to_string(second) + " s; the device or its driver may hang";
    const Texts expected = {late, late, "/ good", "/ good 50.0 %", "/ good 10.0 %"};
    EXPECT_EQ(ReadUntil(provider, second, expected), expected);
  }
  machine.Release();
  const Texts expected = {"/aaa good", "/aaa good 50.0 %", "/aaa good 10.0 %",
                          "/ good",    "/ good 50.0 %",    "/ good 10.0 %"};
  EXPECT_EQ(ReadUntil(provider, 50, expected), expected);
}

TEST(Filesystems, WhatFailsAndWhatIsMissing) {
  MachineFolder known(Root("rw", "rw"));
  known.SetRoom("/", RoomOf(0.5));
  FilesystemProvider before(known.Factory(), {}, {}, kPatient);
  EXPECT_EQ(ReadAt(before, 0).size(), 3u);
  for (const auto& [error, lines] :
       {std::pair(ENOENT, Texts{"/ good", "/ lost: cannot be read: /: No such file or directory",
                                "/ lost: cannot be read: /: No such file or directory"}),
        std::pair(EUCLEAN, Texts{"/ critical: cannot be used: Structure needs cleaning",
                                 "/ sensor-fault: cannot be read: /: Structure needs cleaning",
                                 "/ sensor-fault: cannot be read: /: Structure needs cleaning"})}) {
    known.Fail("/", error);
    EXPECT_EQ(Lines(ReadAt(before, 10)), lines);
  }
  MachineFolder machine(Root("rw", "rw"));
  machine.SetRoom("/", RoomOf(0.5));
  machine.Fail("/", EIO);
  FilesystemProvider provider(machine.Factory(), {"/backup"}, {}, kPatient);
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"/ critical: cannot be used: Input/output error",
                   "/ sensor-fault: cannot be read: /: Input/output error",
                   "/backup critical: not mounted, though it is named as required"}));
  machine.Fail("/proc/self/mountinfo", EIO);
  EXPECT_THROW(ReadAt(provider, 10), std::system_error);
}

}  // namespace
}  // namespace emstatus::test
