#include "host/providers/HwmonProvider.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;

// A chip that is linked from the class: `device` below /sys/devices, its files below `place` there.
MachineFolder::FileTable Chip(const std::string& number, const std::string& device, const std::string& place,
                              const MachineFolder::FileTable& attributes) {
  const std::string folder = "/sys/devices/" + device + place;
  MachineFolder::FileTable files;
  for (const auto& [name, text] : attributes) {
    files.push_back({folder + "/" + name, text + "\n"});
  }
  files.push_back({folder + "/device", "-> /sys/devices/" + device});
  files.push_back({"/sys/class/hwmon/hwmon" + number, "-> " + folder});
  return files;
}

std::string AttributeOf(const std::string& number, const std::string& attribute) {
  return "/sys/class/hwmon/hwmon" + number + "/" + attribute;
}

std::vector<std::string> Names(const std::vector<Reading>& readings) {
  std::vector<std::string> names;
  for (const Reading& reading : readings) {
    names.push_back(reading.id + "|" + reading.name);
  }
  return names;
}

TEST(HwmonProvider, FindsEveryChipOnce) {
  MachineFolder machine;
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kPatient);
  EXPECT_TRUE(ReadAt(provider, 0).empty()) << "no class, no error";

  machine.Write(Chip("0", "platform/coretemp.0", "/hwmon/hwmon0",
                     {{"name", "coretemp"}, {"temp1_input", "40000"}, {"temp1_label", "Package id 0"}}));
  machine.Write(Chip("1", "platform/coretemp.1", "/hwmon/hwmon1",
                     {{"name", "coretemp"}, {"temp1_input", "41000"}, {"temp1_label", "Package id 0"}}));
  // Attributes beside the link to the device, in an older driver, and no name.
  machine.Write({{"/sys/devices/platform/old.5/temp1_input", "42000"},
                 {"/sys/devices/platform/old.5/hwmon/hwmon2/uevent", ""},
                 {"/sys/devices/platform/old.5/hwmon/hwmon2/device", "-> /sys/devices/platform/old.5"},
                 {"/sys/class/hwmon/hwmon2", "-> /sys/devices/platform/old.5/hwmon/hwmon2"}});
  // Two on one device, the same name.
  machine.Write(
      Chip("3", "pci0/0000:01:00.0", "/hwmon/hwmon3", {{"name", "card"}, {"temp1_input", "43000"}}));
  machine.Write(
      Chip("4", "pci0/0000:01:00.0", "/hwmon/hwmon4", {{"name", "card"}, {"temp1_input", "44000"}}));
  // Mirrors of thermal zones: by their place, and by their name alone.
  machine.Write({{"/sys/class/thermal/thermal_zone0/type", "pch-big\n"}});
  machine.Write(
      Chip("5", "virtual/thermal/thermal_zone1", "/hwmon5", {{"name", "acpitz"}, {"temp1_input", "45000"}}));
  machine.Write({{"/sys/devices/virtual/hwmon/hwmon6/name", "pch_big"},
                 {"/sys/devices/virtual/hwmon/hwmon6/temp1_input", "46000"},
                 {"/sys/class/hwmon/hwmon6", "-> /sys/devices/virtual/hwmon/hwmon6"}});
  // Not linked from the class.
  machine.Write({{"/sys/devices/platform/lost.0/hwmon/hwmon9/name", "lost"},
                 {"/sys/devices/platform/lost.0/hwmon/hwmon9/fan1_input", "900"},
                 {"/sys/devices/pci0/i2c-0/0-0019/name", "jc42"},
                 {"/sys/devices/pci0/i2c-0/0-0019/temp1_input", "30000"},
                 {"/sys/bus/i2c/devices/0-0019", "-> /sys/devices/pci0/i2c-0/0-0019"},
                 {"/sys/bus/i2c/devices/0-001a/temp1_input", "31000"}});
  // Linked, but the link leads nowhere.
  machine.Write({{"/sys/class/hwmon/hwmon12", "-> ../../elsewhere/hwmon12"},
                 {"/sys/devices/platform/broken.0/hwmon/hwmon12/name", "broken"},
                 {"/sys/devices/platform/broken.0/hwmon/hwmon12/temp1_input", "29000"}});
  // A copy that was made without links.
  machine.Write({{"/sys/class/hwmon/hwmon8/name", "plain"},
                 {"/sys/class/hwmon/hwmon8/temp1_input", "32000"},
                 {"/sys/class/hwmon/hwmon8/device/modalias", "x"},
                 {"/sys/devices/platform/plain.0/hwmon/hwmon8/name", "plain"},
                 {"/sys/devices/platform/plain.0/hwmon/hwmon8/temp1_input", "32000"},
                 {"/sys/class/hwmon/hwmon11/name", "plain"},
                 {"/sys/class/hwmon/hwmon11/device/temp1_input", "33000"}});
  machine.Write(Chip("7", "pci0/nvme/nvme0", "/hwmon7", {{"name", "nvme"}, {"temp1_input", "38000"}}));
  HwmonProvider afresh(machine.Factory(), HwmonKind::Board, kPatient);
  EXPECT_EQ(Names(ReadAt(afresh, 0)),
            (Texts{"0-001a/temp1|0-001a temp1", "broken-broken.0/temp1|broken temp1",
                   "card-0000:01:00.0/temp1|card 0000:01:00.0 temp1",
                   "card-0000:01:00.0#2/temp1|card 0000:01:00.0#2 temp1",
                   "coretemp-coretemp.0/temp1|coretemp.0 temp1 (Package id 0)",
                   "coretemp-coretemp.1/temp1|coretemp.1 temp1 (Package id 0)",
                   "jc42-0-0019/temp1|jc42 temp1", "lost-lost.0/fan1|lost fan1", "old.5/temp1|old.5 temp1",
                   "plain/temp1|plain temp1", "plain#2/temp1|plain#2 temp1"}));
}

TEST(HwmonProvider, OneBadSensorRemovesNoOther) {
  MachineFolder machine(
      Chip("0", "platform/x.0", "/hwmon/hwmon0",
           {{"name", "x"}, {"temp1_input", "40000"}, {"temp2_input", "41000"}, {"temp3_input", "42000"}}));
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kPatient);
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"x-x.0/temp1 good 40.0 °C", "x-x.0/temp2 good 41.0 °C", "x-x.0/temp3 good 42.0 °C"}));
  machine.Fail(AttributeOf("0", "temp1_input"), EIO);
  machine.Fail(AttributeOf("0", "temp2_input"), ENOENT);
  EXPECT_EQ(Lines(ReadAt(provider, 5)),
            (Texts{"x-x.0/temp1 sensor-fault: cannot be read: temp1_input: Input/output error",
                   "x-x.0/temp3 good 42.0 °C"}));
  machine.Fail(AttributeOf("0", "temp1_input"), 0);
  machine.Fail(AttributeOf("0", "temp2_input"), 0);
  EXPECT_EQ(ReadAt(provider, 10).size(), 3u);
}

TEST(HwmonProvider, AHungChipIsLateAndHoldsUpNoOther) {
  MachineFolder machine(
      Chip("0", "platform/a.0", "/hwmon/hwmon0", {{"name", "a"}, {"temp1_input", "40000"}}));
  machine.Write(Chip("1", "platform/b.0", "/hwmon/hwmon1", {{"name", "b"}, {"temp1_input", "41000"}}));
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kImpatient);
  Texts both = {"a-a.0/temp1 good 40.0 °C", "b-b.0/temp1 good 41.0 °C"};
  EXPECT_EQ(ReadUntil(provider, 0, both), both);
  machine.Hang(AttributeOf("0", "temp1_input"));
  auto readings = ReadAt(provider, 5);
  EXPECT_EQ(Lines(readings), both) << "not late yet";
  EXPECT_LT(readings[0].takenAt.value(), At(5)) << "but its age is told";

  Texts expected = {"a-a.0/temp1 late: no answer for 15 s; the device or its driver may hang", both[1]};
  EXPECT_EQ(ReadUntil(provider, 15, expected), expected);
  HwmonProvider second(machine.Factory(), HwmonKind::Board, kImpatient);
  expected[0] = "a-a.0/temp1 late: no answer for 0 s; the device or its driver may hang";
  EXPECT_EQ(ReadUntil(second, 0, expected), expected) << "known by its files, though it never answered";
  machine.Release();
  EXPECT_EQ(ReadUntil(provider, 25, both), both);
}

TEST(HwmonProvider, AChipThatGoesAndAnotherInItsPlace) {
  MachineFolder machine(
      Chip("0", "platform/a.0", "/hwmon/hwmon0", {{"name", "a"}, {"temp1_input", "40000"}}));
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kPatient);
  EXPECT_EQ(ReadAt(provider, 0).size(), 1u);
  machine.Write({{"/sys/devices/platform/a.0/hwmon/hwmon0/name", "usurper"}});
  EXPECT_EQ(Lines(ReadAt(provider, 5)), Texts{"usurper-a.0/temp1 good 40.0 °C"});
  machine.Remove("/sys/class/hwmon/hwmon0");
  machine.Remove("/sys/devices/platform/a.0");
  EXPECT_TRUE(ReadAt(provider, 15).empty());
}

TEST(HwmonProvider, AFolderThatHangsHoldsUpNoOtherChip) {
  MachineFolder machine(
      Chip("0", "platform/a.0", "/hwmon/hwmon0", {{"name", "a"}, {"temp1_input", "40000"}}));
  machine.Write(Chip("1", "platform/b.0", "/hwmon/hwmon1", {{"name", "b"}, {"temp1_input", "41000"}}));
  machine.Write(
      {{"/sys/devices/platform/c.0/temp1_input", "42000"}, {"/sys/class/thermal/thermal_zone0/type", "b"}});
  machine.Hang(AttributeOf("0", "name"));
  machine.Hang("/sys/devices/platform");
  machine.Hang("/sys/class/thermal/thermal_zone0/type");
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kImpatient);
  Texts expected = {"b-b.0/temp1 good 41.0 °C",
                    "hwmon0 late: no answer for 0 s; the device or its driver may hang"};
  EXPECT_EQ(ReadUntil(provider, 0, expected), expected);
  HwmonProvider disks(machine.Factory(), HwmonKind::Sata, kImpatient);
  EXPECT_TRUE(ReadAt(disks, 0).empty()) << "told once";
  machine.Release();
  expected = {"a-a.0/temp1 good 40.0 °C", "c.0/temp1 good 42.0 °C"};
  EXPECT_EQ(ReadUntil(provider, 5, expected), expected) << "b mirrors a zone";
}

TEST(HwmonProvider, IdsStayWhenTheKernelNumbersAnew) {
  MachineFolder machine;
  const auto write = [&](const char* first, const char* second, const char* a, const char* b) {
    for (const char* gone : {"/sys/class/hwmon", "/sys/devices/platform"}) {
      machine.Remove(gone);
    }
    machine.Write(Chip(first, "platform/x.0", std::string("/hwmon/hwmon") + first,
                       {{"name", "x"}, {"temp1_input", a}}));
    machine.Write(Chip(second, "platform/x.1", std::string("/hwmon/hwmon") + second,
                       {{"name", "x"}, {"temp1_input", b}}));
    machine.Write(Chip("7", "platform/card", "/hwmon/hwmon7", {{"temp1_input", "1000"}}));
    machine.Write(Chip("8", "platform/card", "/hwmon/hwmon8", {{"fan1_input", "1000"}}));
  };
  write("9", "10", "40000", "50000");
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kPatient);
  EXPECT_EQ(Lines(ReadAt(provider, 0)), (Texts{"card/fan1 good 1000 RPM", "card#2/temp1 good 1.0 °C",
                                               "x-x.0/temp1 good 40.0 °C", "x-x.1/temp1 good 50.0 °C"}));
  write("10", "9", "41000", "51000");
  EXPECT_EQ(Lines(ReadAt(provider, 5)), (Texts{"card/fan1 good 1000 RPM", "card#2/temp1 good 1.0 °C",
                                               "x-x.0/temp1 good 41.0 °C", "x-x.1/temp1 good 51.0 °C"}));
}

TEST(HwmonProvider, AlarmsThatClearOnReadAndLimitsThatAreReadSeldom) {
  MachineFolder machine(
      Chip("0", "platform/a.0", "/hwmon/hwmon0",
           {{"name", "a"}, {"temp1_input", "40000"}, {"temp1_max", "80000"}, {"temp1_max_alarm", "1"}}));
  machine.ClearOnRead(AttributeOf("0", "temp1_max_alarm"));
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kPatient);
  EXPECT_EQ(Line(ReadAt(provider, 0)[0]),
            "a-a.0/temp1 warning 40.0 °C: temp1_max_alarm was set, 40.0 °C now, less than 80.0 °C expected");
  EXPECT_EQ(
      Line(ReadAt(provider, 30)[0]),
      "a-a.0/temp1 warning 40.0 °C: temp1_max_alarm was set 30 s ago, 40.0 °C now, less than 80.0 °C expected");
  EXPECT_EQ(machine.TakeReads(AttributeOf("0", "temp1_max")), 1);
  EXPECT_TRUE(provider.Confirm(ObjectClass::Temperature, "a-a.0/temp1"));
  machine.Write({{"/sys/devices/platform/a.0/hwmon/hwmon0/temp1_max", "39000"}});
  EXPECT_EQ(Line(ReadAt(provider, 35)[0]), "a-a.0/temp1 good 40.0 °C");
  EXPECT_EQ(ReadAt(provider, 60)[0].condition, Condition::Warning)
      << "the limits are read again after a minute";
}

TEST(HwmonProvider, AnAlarmInASampleThatCameLateIsNotLost) {
  const std::string alarm = "/sys/devices/platform/a.0/hwmon/hwmon0/temp1_max_alarm";
  MachineFolder machine(
      Chip("0", "platform/a.0", "/hwmon/hwmon0",
           {{"name", "a"}, {"temp1_input", "40000"}, {"temp1_max", "80000"}, {"temp1_max_alarm", "0"}}));
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kImpatient);
  const Texts good = {"a-a.0/temp1 good 40.0 °C"};
  EXPECT_EQ(ReadUntil(provider, 0, good), good);
  machine.Write({{alarm, "1"}});
  machine.ClearOnRead(alarm);
  machine.Hang(AttributeOf("0", "temp1_input"));
  EXPECT_EQ(Lines(ReadAt(provider, 5)), good);
  machine.WaitUntilHanging(AttributeOf("0", "temp1_input"));
  machine.Release();
  while (machine.Text(alarm) != "0") {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  std::this_thread::sleep_for(kImpatient);
  const Texts expected = {
      "a-a.0/temp1 warning 40.0 °C: temp1_max_alarm was set 5 s ago, 40.0 °C now, less than 80.0 °C expected"};
  EXPECT_EQ(ReadUntil(provider, 10, expected), expected);
}

TEST(HwmonProvider, AllFansAtOnceAreOneFault) {
  MachineFolder machine(Chip("0", "platform/f.0", "/hwmon/hwmon0",
                             {{"name", "f"},
                              {"fan1_input", "0"},
                              {"fan1_min", "500"},
                              {"fan2_input", "800"},
                              {"fan2_min", "500"},
                              {"fan3_input", "0"}}));
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kPatient);
  const std::string noFan =
      "f-f.0/fan3 inactive: 0 RPM: no minimum is set and it has never turned; no fan connected?";
  EXPECT_EQ(Lines(ReadAt(provider, 0)), (Texts{"f-f.0/fan1 critical 0 RPM: 0 RPM, at least 500 RPM expected",
                                               "f-f.0/fan2 good 800 RPM", noFan}));
  machine.Write({{"/sys/devices/platform/f.0/hwmon/hwmon0/fan2_input", "0"}});
  EXPECT_EQ(Lines(ReadAt(provider, 5)),
            (Texts{"f-f.0/fan1 sensor-fault: tachometer not trusted: all 2 fans of f read 0 RPM at once",
                   "f-f.0/fan2 inactive: tachometer not trusted, see f fan1", noFan}));
}

TEST(HwmonProvider, IntrusionIsConfirmedAtTheChip) {
  MachineFolder machine(
      Chip("0", "platform/i.0", "/hwmon/hwmon0", {{"name", "i"}, {"intrusion0_alarm", "1"}}));
  HwmonProvider provider(machine.Factory(), HwmonKind::Board, kPatient);
  EXPECT_EQ(ReadAt(provider, 0)[0].quality, Quality::Inactive);
  machine.Fail(AttributeOf("0", "intrusion0_alarm"), EROFS);
  EXPECT_FALSE(provider.Confirm(ObjectClass::Intrusion, "i-i.0/intrusion0"));
  machine.Fail(AttributeOf("0", "intrusion0_alarm"), 0);
  EXPECT_TRUE(provider.Confirm(ObjectClass::Intrusion, "i-i.0/intrusion0"));
  EXPECT_EQ(machine.Text("/sys/devices/platform/i.0/hwmon/hwmon0/intrusion0_alarm").substr(0, 1), "0");
  EXPECT_FALSE(provider.Confirm(ObjectClass::Intrusion, "nobody/intrusion0"));
}

TEST(HwmonProvider, DrivesAreAskedSeldom) {
  MachineFolder machine(Chip("0", "pci0/nvme/nvme0", "/hwmon0",
                             {{"name", "nvme"}, {"temp1_input", "38000"}, {"temp1_label", "Composite"}}));
  machine.Write({{"/sys/devices/pci0/nvme/nvme0/serial", "S64ANX0  \n"}});
  machine.Write(
      Chip("1", "pci0/ata1/0:0:0:0", "/hwmon/hwmon1", {{"name", "drivetemp"}, {"temp1_input", "30000"}}));
  machine.Write({{"/sys/devices/pci0/ata1/0:0:0:0/block/sda/size", "1"},
                 {"/sys/devices/pci0/ata1/0:0:0:0/wwid", "naa.5000"}});
  HwmonProvider nvme(machine.Factory(), HwmonKind::Nvme, kPatient);
  HwmonProvider sata(machine.Factory(), HwmonKind::Sata, kPatient);
  const auto readings = ReadAt(nvme, 0);
  EXPECT_EQ(Names(readings), (Texts{"nvme-S64ANX0/temp1|nvme0 temp1 (Composite)"}));
  EXPECT_EQ(readings[0].objectClass, ObjectClass::DiskTemperature);
  EXPECT_EQ(Names(ReadAt(sata, 0)), (Texts{"drivetemp-naa.5000/temp1|sda temp1"}));
  EXPECT_GE(nvme.Interval(), std::chrono::minutes(1));
  EXPECT_GE(sata.Interval(), std::chrono::minutes(5));
  for (int second = 1; second < 25; ++second) {
    ReadAt(nvme, second);
  }
  EXPECT_EQ(machine.TakeReads(AttributeOf("0", "temp1_input")), 1) << "a hurried scan asks no drive again";
}

}  // namespace
}  // namespace emstatus::test
