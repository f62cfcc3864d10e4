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
      {{0, 0, 0, 0, 0, false}, "/ implausible: the filesystem says that its size is 0", ""},
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
