#include <gtest/gtest.h>

#include <cerrno>

#include "host/providers/PowerSupplyProvider.h"
#include "host/providers/ThermalZoneProvider.h"
#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;

MachineFolder::FileTable In(const std::string& folder, const MachineFolder::FileTable& attributes) {
  MachineFolder::FileTable files;
  for (const auto& [name, text] : attributes) {
    files.push_back({folder + "/" + name, text + "\n"});
  }
  return files;
}

TEST(PowerSupplies, SuppliesAndBatteries) {
  const struct {
    MachineFolder::FileTable attributes;
    Texts lines;
  } rows[] = {
      {{{"type", "Mains"}, {"online", "1"}}, {"X good"}},
      {{{"type", "Mains"}, {"online", "0"}}, {"X warning: does not feed the machine: no power comes in"}},
      {{{"type", "USB"}, {"online", "0"}}, {"X inactive: nothing is connected to it"}},
      {{{"type", "Mains"}}, {"X inactive: tells nothing of its state"}},
      {{{"type", "Mains"}, {"online", "yes"}}, {"X implausible: online reads \"yes\", a number expected"}},
      {{{"type", "Mains"}, {"online", "0"}, {"present", "0"}}, {"X inactive: not present: the bay is empty"}},
      {{{"type", "Battery"}, {"status", "Full"}, {"capacity", "5"}}, {"X good 5.0 %"}},
      {{{"type", "Battery"}, {"status", "Discharging"}, {"capacity", "19"}},
       {"X warning 19.0 %: discharging, 19 % left, at least 20 % expected"}},
      {{{"type", "Battery"}, {"status", "Discharging"}, {"capacity", "9"}},
       {"X critical 9.0 %: discharging, 9 % left, at least 20 % expected"}},
      {{{"type", "Battery"}, {"status", "Discharging"}, {"capacity_level", "Critical"}},
       {"X critical: discharging, its charge is critical"}},
      {{{"type", "Battery"}, {"status", "Charging"}, {"capacity", "101"}},
       {"X implausible: charge of 101 %, between 0 % and 100 % possible"}},
      {{{"type", "Battery"}, {"status", "Full"}, {"health", "Dead"}},
       {"X critical: its health is \"Dead\", \"Good\" expected"}},
      {{{"type", "Battery"}, {"status", "Full"}, {"health", "Cold"}},
       {"X warning: its health is \"Cold\", \"Good\" expected"}},
      {{{"type", "Battery"}, {"status", "Full"}, {"energy_full", "4"}, {"energy_full_design", "10"}},
       {"X warning: worn: holds 40 % of what it was made for, at least 50 % expected"}},
      {{{"type", "Battery"}, {"status", "Full"}, {"temp", "321"}}, {"X good", "X/temp good 32.1 °C"}},
      {{{"type", "Battery"}, {"status", "Full"}, {"temp", "610"}, {"temp_alert_max", "600"}},
       {"X good", "X/temp warning 61.0 °C: 61.0 °C, less than 60.0 °C expected"}},
      {{{"type", "Battery"}, {"status", "Full"}, {"temp", "32100"}},
       {"X good",
        "X/temp implausible: temp reads \"32100\" (tenths of a °C), between -400 and 1500 possible"}},
      {{{"type", "Battery"}, {"status", "Full"}, {"temp", "321"}, {"hwmon3/name", "X"}}, {"X good"}},
      {{{"type", "Battery"}, {"scope", "Device"}, {"status", "Discharging"}, {"capacity", "3"}}, {}},
  };
  for (const auto& row : rows) {
    MachineFolder machine(In("/sys/class/power_supply/X", row.attributes));
    PowerSupplyProvider provider(machine.Factory(), kPatient);
    EXPECT_EQ(Lines(ReadAt(provider, 0)), row.lines);
  }
}

TEST(PowerSupplies, WhatCannotBeRead) {
  const std::string folder = "/sys/class/power_supply/BAT0";
  const struct {
    const char* attribute;
    int error;
    const char* line;
  } rows[] = {
      {"health", EIO, "BAT0 sensor-fault: cannot be read: health: Input/output error"},
      {"capacity", ETIMEDOUT, "BAT0 late: cannot be read: capacity: Connection timed out"},
      {"capacity", ENODATA, "BAT0 good"},
      {"status", EACCES, "BAT0 late: cannot be read: status: Permission denied"},
  };
  for (const auto& row : rows) {
    MachineFolder machine(
        In(folder, {{"type", "Battery"}, {"status", "Full"}, {"health", "Good"}, {"capacity", "90"}}));
    machine.Fail(folder + "/" + row.attribute, row.error);
    PowerSupplyProvider provider(machine.Factory(), kPatient);
    EXPECT_EQ(Lines(ReadAt(provider, 0)), Texts{row.line});
  }
  MachineFolder machine(In(folder, {{"type", "Battery"}, {"status", "Full"}}));
  machine.Hang(folder + "/status");
  PowerSupplyProvider provider(machine.Factory(), kImpatient);
  EXPECT_EQ(ReadAt(provider, 0)[0].objectClass, ObjectClass::Battery) << "told by its name";
  machine.Release();
}

TEST(PowerSupplies, TwoMainsAreAGroup) {
  MachineFolder machine(In("/sys/class/power_supply/A", {{"type", "Mains"}, {"online", "1"}}));
  machine.Write(In("/sys/class/power_supply/B", {{"type", "Mains"}, {"online", "0"}}));
  machine.Write(In("/sys/class/power_supply/C", {{"type", "Mains"}, {"online", "1"}}));
  machine.Write(In("/sys/class/power_supply/usb", {{"type", "USB"}, {"online", "1"}}));
  machine.Fail("/sys/class/power_supply/C/online", EIO);
  PowerSupplyProvider provider(machine.Factory(), kPatient);
  const auto readings = ReadAt(provider, 0);
  EXPECT_EQ(Lines(readings)[2], "C sensor-fault: cannot be read: online: Input/output error");
  EXPECT_EQ(readings[0].redundancy, (Redundancy{"mains", 3, 1, 1}));
  EXPECT_FALSE(readings[3].redundancy) << "whatever is plugged in there";
}

TEST(ThermalZones, JudgedByTheirTripsAndToldOnce) {
  MachineFolder machine;
  ThermalZoneProvider provider(machine.Factory(), kImpatient);
  EXPECT_TRUE(ReadAt(provider, 0).empty());
  const std::string folder = "/sys/class/thermal/thermal_zone";
  machine.Write(In(folder + "0", {{"type", "acpitz"}, {"temp", "-44000"}}));
  machine.Write(In(folder + "1", {{"type", "acpitz"},
                                  {"temp", "96000"},
                                  {"trip_point_0_type", "critical"},
                                  {"trip_point_0_temp", "95000"}}));
  machine.Write(In(folder + "2", {{"type", "x86_pkg_temp"}, {"temp", "50000"}}));
  machine.Write(In(folder + "3", {{"type", "soc"},
                                  {"temp", "86000"},
                                  {"trip_point_0_type", "passive"},
                                  {"trip_point_0_temp", "60000"},
                                  {"trip_point_1_type", "hot"},
                                  {"trip_point_1_temp", "85000"},
                                  {"trip_point_2_type", "critical"},
                                  {"trip_point_2_temp", "-274000"}}));
  machine.Write(In(folder + "4", {{"type", "wifi"}, {"temp", "50000"}, {"mode", "enabled"}}));
  machine.Write(In(folder + "10", {{"type", "off"}, {"temp", "0"}, {"mode", "disabled"}}));
  machine.Fail(folder + "4/temp", EAGAIN);
  Texts lines = {"acpitz implausible: -44.0 °C, between -40.0 °C and 150.0 °C possible",
                 "acpitz#2 critical 96.0 °C: 96.0 °C, less than 95.0 °C expected",
                 "x86_pkg_temp good 50.0 °C",
                 "soc warning 86.0 °C: 86.0 °C, less than 85.0 °C expected",
                 "wifi late: cannot be read: temp: Resource temporarily unavailable",
                 "off inactive: switched off (mode is disabled)"};
  EXPECT_EQ(ReadUntil(provider, 10, lines), lines);
  machine.Write({{"/sys/class/hwmon/hwmon0/name", "coretemp\n"}});
  lines.erase(lines.begin() + 2);
  EXPECT_EQ(ReadUntil(provider, 20, lines), lines);
  machine.Hang(folder + "1/temp");
  ReadAt(provider, 30);
  lines[1] = "acpitz#2 late: no answer for 30 s; the device or its driver may hang";
  EXPECT_EQ(ReadUntil(provider, 50, lines), lines);
  machine.Hang(folder + "3/type");
  machine.Hang("/sys/class/hwmon/hwmon0/name");
  ThermalZoneProvider second(machine.Factory(), kImpatient);
  const std::string silent = " late: no answer for 0 s; the device or its driver may hang";
  lines = {
      lines[0], "thermal_zone1" + silent, "x86_pkg_temp good 50.0 °C", "thermal_zone3" + silent, lines[3],
      lines[4]};
  EXPECT_EQ(ReadUntil(second, 0, lines), lines);
}

}  // namespace
}  // namespace emstatus::test
