#include <gtest/gtest.h>

#include <cerrno>
#include <mutex>

#include "host/providers/DiskProvider.h"
#include "host/providers/NvmeProvider.h"
#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;

TEST(NvmeControllers, StatesAndPaths) {
  MachineFolder machine;
  NvmeProvider provider(machine.Factory(), kPatient);
  EXPECT_TRUE(ReadAt(provider, 0).empty());
  const char* states[] = {"live", "connecting", "dead", "deleting (no IO)", "someday"};
  for (std::size_t at = 0; at < std::size(states); ++at) {
    const std::string folder = "/sys/class/nvme/nvme" + std::to_string(at);
    machine.Write({{folder + "/state", states[at]}, {folder + "/subsysnqn", at < 2 ? "nqn.x" : ""}});
  }
  machine.Write({{"/sys/class/nvme/nvme0/serial", "S1 \n"}, {"/sys/class/nvme/nvme5/state", "live"}});
  machine.Fail("/sys/class/nvme/nvme5/state", EIO);
  const auto readings = ReadAt(provider, 5);
  EXPECT_EQ(
      Lines(readings),
      (Texts{
          "S1 good",
          "nvme1 warning: the connection is lost and is being made anew (its state is connecting, live expected)",
          "nvme2 critical: does not answer any more and was given up (its state is dead, live expected)",
          "nvme3 critical: is being taken away and does no I/O (its state is deleting (no IO), live expected)",
          "nvme4 warning: its state is \"someday\", live expected",
          "nvme5 sensor-fault: cannot be read: state: Input/output error"}));
  EXPECT_EQ(readings[0].redundancy, (Redundancy{"nqn.x", 2, 1, 1}));
  EXPECT_FALSE(readings[2].redundancy);
  machine.Hang("/sys/class/nvme/nvme0/state");
  NvmeProvider second(machine.Factory(), kImpatient);
  EXPECT_EQ(Line(ReadAt(second, 0)[0]), "nvme0 late: no answer for 0 s; the device or its driver may hang");
  machine.Release();
}

MachineFolder::FileTable Disk(const std::string& name, const MachineFolder::FileTable& attributes) {
  MachineFolder::FileTable files = {{"/sys/block/" + name + "/size", "2048\n"},
                                    {"/sys/block/" + name + "/device/uevent", ""}};
  for (const auto& [attribute, text] : attributes) {
    files.push_back({"/sys/block/" + name + "/" + attribute, text + "\n"});
  }
  return files;
}

TEST(Disks, WhatTheKernelTells) {
  MachineFolder machine(
      Disk("sda", {{"device/state", "running"}, {"device/ioerr_cnt", "0x10"}, {"device/wwid", "naa.1"}}));
  machine.Write(Disk("sdb", {{"device/state", "offline"}, {"device/wwid", "naa.1"}}));
  machine.Write(Disk("mmcblk0", {{"device/life_time", "0x02 0x0b"}, {"device/pre_eol_info", "0x01"}}));
  machine.Write(Disk("mmcblk0boot0", {}));
  machine.Write(Disk("nvme0c0n1", {}));
  machine.Write(Disk("sdc", {{"removable", "1"}, {"device/state", "running"}}));
  machine.Write(Disk("sdd", {{"size", "0"}, {"device/state", "running"}}));
  machine.Write(Disk("sde", {{"device/state", "someday"}}));
  machine.Write(Disk("sdf", {{"device/state", "running"}}));
  machine.Fail("/sys/block/sdf/device/state", EIO);
  machine.Write(Disk("vda", {}));
  machine.Write({{"/sys/block/loop0/size", "0"}});
  DiskProvider provider(machine.Factory(), nullptr, kPatient);
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"mmcblk0 warning 1.0 MiB: it is beyond its expected life", "naa.1 good 1.0 MiB",
                   "naa.1-sdb critical 1.0 MiB: its state is offline, running expected",
                   "sdd critical 0 B: its size is 0 B, more expected",
                   "sde warning 1.0 MiB: its state is someday, running expected",
                   "sdf sensor-fault: cannot be read: state: Input/output error"}));
  machine.Write({{"/sys/block/sda/device/ioerr_cnt", "0x19"}});
  EXPECT_EQ(Line(ReadAt(provider, 10)[1]), "naa.1 good 1.0 MiB")
      << "programs that try commands make some fail";
  machine.Write({{"/sys/block/sda/device/ioerr_cnt", "0x1a"}});
  EXPECT_EQ(Line(ReadAt(provider, 20)[1]),
            "naa.1 warning 1.0 MiB: 10 commands failed in the last hour, less than 10 expected");
  EXPECT_EQ(Line(ReadAt(provider, 3610)[1]), "naa.1 good 1.0 MiB");
}

TEST(SmartTexts, NvmeLogAndAtaRegisters) {
  std::vector<std::uint8_t> page(512, 0);
  EXPECT_EQ(ParseNvmeSmartLog(page), std::nullopt) << "a page that was never filled";
  page[0] = 0x04;
  page[3] = 90;
  page[4] = 10;
  page[5] = 101;
  EXPECT_EQ(ParseNvmeSmartLog(page), (SmartHealth{false, 0x04, 90, 10, 101}));
  page.pop_back();
  EXPECT_EQ(ParseNvmeSmartLog(page), std::nullopt);

  std::vector<std::uint8_t> sense = {0x72, 0x01, 0, 0x1D, 0, 0, 0,    14, 0x09, 12, 0,
                                     0,    0,    0, 0,    0, 0, 0x4F, 0,  0xC2, 0,  0x50};
  EXPECT_EQ(ParseAtaSmartStatus(sense), SmartHealth{});
  sense[17] = 0xF4;
  EXPECT_EQ(ParseAtaSmartStatus(sense), std::nullopt) << "half of an answer";
  sense[19] = 0x2C;
  EXPECT_TRUE(ParseAtaSmartStatus(sense)->predictsFailure);
  sense[8] = 0;
  EXPECT_EQ(ParseAtaSmartStatus(sense), std::nullopt);
  sense = {0x70, 0, 0, 0, 0x50, 0, 0xFF, 10, 0, 0, 0xF4, 0x2C, 0, 0x1D, 0, 0, 0, 0};
  EXPECT_TRUE(ParseAtaSmartStatus(sense)->predictsFailure) << "fixed format";
  sense[13] = 0;
  EXPECT_EQ(ParseAtaSmartStatus(sense), std::nullopt) << "no registers in it";
}

class ScriptedSmart final : public SmartReader {
 public:
  FileResult<SmartHealth> Ask(const std::string& disk) override {
    const std::lock_guard lock(lock_);
    asked.push_back(disk);
    return answers[disk];
  }
  std::mutex lock_;
  std::map<std::string, FileResult<SmartHealth>> answers;
  std::vector<std::string> asked;
};

TEST(Disks, WhatDrivesSayOfThemselvesAndSeldom) {
  MachineFolder machine(Disk("sda", {{"device/vendor", "ATA     "}, {"device/state", "running"}}));
  machine.Write(Disk("sdb", {{"device/vendor", "Generic"}, {"device/state", "running"}}));
  machine.Write(Disk("nvme0n1", {{"device/state", "live"}}));
  auto smart = std::make_shared<ScriptedSmart>();
  smart->answers["sda"].error = EPERM;
  smart->answers["nvme0n1"].value = {false, 0, 5, 10, 3};
  DiskProvider provider(machine.Factory(), smart, kPatient);
  Texts lines = {
      "nvme0n1 critical 1.0 MiB: 5 % of its spare blocks left, at least 10 % expected",
      "sda good 1.0 MiB: its own word on its health (SMART) cannot be read: Operation not permitted",
      "sdb good 1.0 MiB"};
  EXPECT_EQ(Lines(ReadAt(provider, 0)), lines);
  smart->answers["sda"] = {{true, 0, {}, {}, {}}, 0};
  EXPECT_EQ(Lines(ReadAt(provider, 1790)), lines);
  EXPECT_EQ(smart->asked, (Texts{"nvme0n1", "sda"})) << "asked once, and no others";
  lines[1] = "sda critical 1.0 MiB: the drive predicts its own failure (SMART)";
  EXPECT_EQ(Lines(ReadAt(provider, 1800)), lines);
  smart->answers["sda"] = {{}, ENODATA};
  EXPECT_EQ(Lines(ReadAt(provider, 3600)), lines) << "a drive that sleeps is not better for it";
}

TEST(Disks, OneThatHangsIsLateAndHoldsUpNoOther) {
  MachineFolder machine(Disk("sda", {{"device/state", "running"}, {"device/wwid", "naa.1"}}));
  machine.Write(Disk("sdb", {{"device/state", "running"}, {"device/wwid", "naa.2"}}));
  DiskProvider provider(machine.Factory(), nullptr, kImpatient);
  Texts lines = {"naa.1 good 1.0 MiB", "naa.2 good 1.0 MiB"};
  EXPECT_EQ(ReadUntil(provider, 0, lines), lines);
  machine.Hang("/sys/block/sda/device/state");
  ReadAt(provider, 10);
  lines[0] = "naa.1 late: no answer for 30 s; the device or its driver may hang";
  EXPECT_EQ(ReadUntil(provider, 30, lines), lines);
  DiskProvider second(machine.Factory(), nullptr, kImpatient);
  lines[0] = "sda late: no answer for 0 s; the device or its driver may hang";
  EXPECT_EQ(ReadUntil(second, 0, lines), lines);
  machine.Release();
}

}  // namespace
}  // namespace emstatus::test
