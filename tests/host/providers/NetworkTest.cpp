#include <gtest/gtest.h>

#include <cerrno>

#include "host/providers/NetworkProvider.h"
#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;

MachineFolder::FileTable Link(const std::string& name, const std::string& operstate, bool adminUp,
                              const std::string& carrier = "1") {
  const std::string folder = "/sys/class/net/" + name;
  return {{folder + "/ifindex", "1" + name.substr(name.size() - 1) + "\n"},
          {folder + "/operstate", operstate + "\n"},
          {folder + "/flags", adminUp ? "0x1003\n" : "0x1002\n"},
          {folder + "/carrier", carrier + "\n"},
          {folder + "/speed", "1000\n"},
          {folder + "/device/uevent", ""}};
}

TEST(NetworkLinks, ByOperstate) {
  const struct {
    MachineFolder::FileTable files;
    bool required;
    const char* line;
  } rows[] = {
      {Link("eth0", "up", true), false, "eth0 good 1 Gbit/s"},
      {Link("eth0", "unknown", true), false, "eth0 good 1 Gbit/s"},
      {Link("eth0", "unknown", true, "0"), false,
       "eth0 warning: no carrier, though it is switched on; up expected; never up since reading began"},
      {Link("eth0", "down", true, "0"), true,
       "eth0 critical: no carrier, though it is switched on; up expected; never up since reading began"},
      {Link("eth0", "lowerlayerdown", true, "0"), false,
       "eth0 warning: the link below it is down, though it is switched on; up expected; never up since reading began"},
      {Link("eth0", "dormant", true, "1"), false,
       "eth0 warning: waits for another party (dormant), though it is switched on; up expected"},
      {Link("eth0", "down", false), false, "eth0 inactive: switched off by the administrator"},
      {Link("eth0", "down", false), true,
       "eth0 critical: switched off by the administrator, though it is named as required"},
      {Link("eth1", "up", true), true,
       "eth0 critical: there is no such link, though it is named as required"},
  };
  for (const auto& row : rows) {
    MachineFolder machine(row.files);
    NetworkProvider provider(machine.Factory(),
                             row.required ? std::vector<std::string>{"eth0"} : std::vector<std::string>{},
                             kPatient);
    EXPECT_EQ(Line(ReadAt(provider, 0).back()), row.line);
  }
}

TEST(NetworkLinks, ALinkThatWasUpIsCriticalWhenItGoesDown) {
  MachineFolder machine(Link("eth0", "up", true));
  NetworkProvider provider(machine.Factory(), {}, kPatient);
  machine.Write({{"/sys/class/net/eth0/speed", "-1"}});
  EXPECT_EQ(Lines(ReadAt(provider, 0)), (Texts{"eth0 good"})) << "an unknown speed is no speed";
  machine.Write(Link("eth0", "down", true, "0"));
  EXPECT_EQ(Lines(ReadAt(provider, 2)),
            (Texts{"eth0 critical: no carrier, though it is switched on; up expected"}));
  machine.Fail("/sys/class/net/eth0/operstate", EIO);
  EXPECT_EQ(Lines(ReadAt(provider, 4)),
            (Texts{"eth0 sensor-fault: cannot be read: operstate: Input/output error"}));
  machine.Fail("/sys/class/net/eth0/operstate", 0);
  machine.Fail("/sys/class/net/eth0/flags", EIO);
  EXPECT_EQ(Lines(ReadAt(provider, 6)),
            (Texts{"eth0 sensor-fault: cannot be read: flags: Input/output error"}));
}

TEST(NetworkLinks, SpeedDuplexLossesAndDamage) {
  const std::string folder = "/sys/class/net/eth0/";
  const struct {
    MachineFolder::FileTable change;
    const char* line;
  } rows[] = {
      {{{folder + "speed", "100"}}, "eth0 warning 100 Mbit/s: 100 Mbit/s, 1 Gbit/s before"},
      {{{folder + "speed", "100"}, {folder + "phy80211/name", "phy0"}}, "eth0 good 100 Mbit/s"},
      {{{folder + "speed", "2500"}}, "eth0 good 2.5 Gbit/s"},
      {{{folder + "duplex", "half"}}, "eth0 warning 1 Gbit/s: half duplex, full expected"},
      {{{folder + "duplex", "unknown"}}, "eth0 good 1 Gbit/s"},
      {{{folder + "carrier_down_count", "9"}}, "eth0 good 1 Gbit/s"},
      {{{folder + "carrier_down_count", "10"}},
       "eth0 warning 1 Gbit/s: lost its carrier 3 times in the last 10 min, less than 3 expected"},
      {{{folder + "carrier_down_count", "2"}}, "eth0 good 1 Gbit/s"},
      {{{folder + "statistics/rx_crc_errors", "600"}},
       "eth0 warning 1 Gbit/s: 100 frames arrived damaged in the last 10 min, less than 100 expected"},
  };
  for (const auto& row : rows) {
    MachineFolder machine(Link("eth0", "up", true));
    machine.Write({{folder + "carrier_down_count", "7"}, {folder + "statistics/rx_crc_errors", "500"}});
    NetworkProvider provider(machine.Factory(), {}, kPatient);
    EXPECT_EQ(Line(ReadAt(provider, 0)[0]), "eth0 good 1 Gbit/s");
    machine.Write(row.change);
    EXPECT_EQ(Line(ReadAt(provider, 2)[0]), row.line);
    EXPECT_TRUE(provider.Confirm(ObjectClass::NetworkLink, "eth0"));
    EXPECT_EQ(ReadAt(provider, 4)[0].condition == Condition::Good, row.change[0].text != "half") << row.line;
  }
}

TEST(NetworkLinks, ARenamedLinkIsNotLostAndAHungOneIsLateAlone) {
  MachineFolder machine(Link("eth0", "up", true));
  machine.Write(Link("eth1", "up", true));
  NetworkProvider provider(machine.Factory(), {"eth1", "eth1"}, kImpatient);
  Texts expected = {"eth0 good 1 Gbit/s", "eth1 good 1 Gbit/s"};
  EXPECT_EQ(ReadUntil(provider, 0, expected), expected);
  machine.Remove("/sys/class/net/eth0");
  machine.Remove("/sys/class/net/eth1");
  machine.Write(Link("eno0", "down", true, "0"));
  machine.Write(Link("eno1", "up", true));
  expected = {"eth0 inactive: is called eno0 now",
              "eno0 critical: no carrier, though it is switched on; up expected", "eno1 good 1 Gbit/s",
              "eth1 critical: there is no such link, though it is named as required; it is called eno1 now"};
  EXPECT_EQ(ReadUntil(provider, 2, expected), expected);
  machine.Hang("/sys/class/net/eno0/speed");
  machine.Write(Link("eno0", "up", true));
  ReadAt(provider, 4);
  expected[1] = "eno0 late: no answer for 8 s; the device or its driver may hang";
  EXPECT_EQ(ReadUntil(provider, 10, expected), expected);
}

TEST(NetworkLinks, OnlyLinksThatStandForSomething) {
  MachineFolder machine;
  EXPECT_TRUE(
      ReadAt(*std::make_unique<NetworkProvider>(machine.Factory(), std::vector<std::string>{}, kPatient), 0)
          .empty());
  for (const char* name : {"lo", "veth1a2b", "tun0", "docker0", "vlan5"}) {
    machine.Write(Link(name, "down", true, "0"));
    machine.Remove(std::string("/sys/class/net/") + name + "/device");
  }
  machine.Write({{"/sys/class/net/docker0/bridge/stp_state", "0"},
                 {"/sys/class/net/vlan5/lower_eth0/ifindex", "2"},
                 {"/sys/class/net/bonding_masters", "\n"}});
  NetworkProvider provider(machine.Factory(), {}, kPatient);
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"docker0 inactive: no carrier; a virtual link follows what is connected to it",
                   "vlan5 inactive: no carrier; a virtual link follows what is connected to it"}));
  machine.Write({{"/sys/class/net/docker0/operstate", "up"}, {"/sys/class/net/docker0/carrier", "1"}});
  EXPECT_EQ(Line(ReadAt(provider, 2)[0]), "docker0 good 1 Gbit/s");
  machine.Write({{"/sys/class/net/docker0/operstate", "down"}, {"/sys/class/net/docker0/carrier", "0"}});
  EXPECT_EQ(Line(ReadAt(provider, 4)[0]),
            "docker0 inactive: no carrier; a virtual link follows what is connected to it")
      << "its last container has ended";
  machine.Write(Link("ens1f0v1", "up", true));
  machine.Write({{"/sys/class/net/ens1f0v1/device/physfn/uevent", ""}});
  EXPECT_TRUE(ReadAt(provider, 6).back().mayGo || ReadAt(provider, 6)[1].mayGo)
      << "handed to a guest and back";
}

TEST(NetworkBonds, AreRedundancyGroups) {
  MachineFolder machine(Link("bond0", "up", true));
  machine.Write(Link("eth0", "up", true));
  machine.Write(Link("eth1", "up", true));
  machine.Write({{"/sys/class/net/bond0/bonding/slaves", "eth0 eth1\n"},
                 {"/sys/class/net/bond0/bonding/min_links", "0\n"},
                 {"/sys/class/net/eth1/bonding_slave/mii_status", "up\n"}});
  NetworkProvider provider(machine.Factory(), {}, kPatient);
  auto readings = ReadAt(provider, 0);
  EXPECT_EQ(Lines(readings), (Texts{"eth0 good 1 Gbit/s", "eth1 good 1 Gbit/s", "bond0 good 2"}));
  EXPECT_EQ(readings[0].redundancy, (Redundancy{"bond0", 2, 1, 2}));

  machine.Write({{"/sys/class/net/eth1/bonding_slave/mii_status", "down\n"}});
  readings = ReadAt(provider, 2);
  EXPECT_EQ(Line(readings[2]), "bond0 warning 1: 1 of 2 links work, 2 expected; down: eth1");
  EXPECT_EQ(readings[1].redundancy, (Redundancy{"bond0", 2, 1, 1}));

  machine.Write({{"/sys/class/net/bond0/bonding/slaves", "eth0\n"}});
  EXPECT_EQ(Line(ReadAt(provider, 4)[2]),
            "bond0 warning 1: 1 of 2 links work, 2 expected; 1 taken out of the bond");
  EXPECT_TRUE(provider.Confirm(ObjectClass::NetworkBond, "bond0"));
  EXPECT_EQ(Line(ReadAt(provider, 6)[2]), "bond0 good 1");

  machine.Write(Link("eth0", "down", true, "0"));
  EXPECT_EQ(Line(ReadAt(provider, 8)[2]), "bond0 critical 0: 0 of 1 links work, 1 expected; down: eth0");
}

TEST(NetworkBonds, ByModeAndPartner) {
  const std::string folder = "/sys/class/net/bond0/";
  const struct {
    MachineFolder::FileTable files;
    const char* line;
  } rows[] = {
      {{{folder + "bonding/mode", "active-backup 1"}, {folder + "bonding/active_slave", "eth0"}},
       "bond0 good 2"},
      {{{folder + "bonding/mode", "active-backup 1"}, {folder + "bonding/active_slave", ""}},
       "bond0 critical 2: none of its links is in use, one expected"},
      {{{folder + "bonding/mode", "balance-rr 0"}, {folder + "bonding/active_slave", ""}}, "bond0 good 2"},
      {{{folder + "carrier", "0"}}, "bond0 critical 2: its links work, but the bond has no carrier"},
      {{{folder + "bonding/mode", "802.3ad 4"},
        {folder + "bonding/ad_partner_mac", "00:00:00:00:00:00"},
        {folder + "bonding/ad_aggregator", "1"}},
       "bond0 warning 1: the switch does not answer as a partner (LACP); 1 of 2 links work, 2 expected; down: eth1"},
      {{{folder + "bonding/mode", "802.3ad 4"},
        {folder + "bonding/ad_partner_mac", "02:00:00:00:00:01"},
        {folder + "bonding/ad_aggregator", "2"},
        {folder + "bonding/min_links", "2"}},
       "bond0 critical 1: 1 of 2 links work, 2 expected; down: eth0"},
      {{{folder + "bonding/slaves", ""}}, "bond0 warning: no link is in it, 1 expected"},
      {{{folder + "bonding/slaves", ""}, {folder + "flags", "0x1002"}},
       "bond0 inactive: switched off by the administrator"},
      {{{"/sys/class/net/eth1/flags", ""}, {folder + "bonding/slaves", "eth0 eth2"}},
       "bond0 warning 1: 1 of 2 links work, 2 expected; down: eth2"},
  };
  for (const auto& row : rows) {
    MachineFolder machine(Link("bond0", "up", true));
    machine.Write(Link("eth0", "up", true));
    machine.Write(Link("eth1", "up", true));
    machine.Write({{folder + "bonding/slaves", "eth0 eth1\n"},
                   {"/sys/class/net/eth0/bonding_slave/ad_aggregator_id", "1"},
                   {"/sys/class/net/eth1/bonding_slave/ad_aggregator_id", "2"}});
    machine.Write(row.files);
    NetworkProvider provider(machine.Factory(), {}, kPatient);
    EXPECT_EQ(Line(ReadAt(provider, 0).back()), row.line);
  }
}

TEST(NetworkBonds, WhatIsNotKnownOfItsLinksIsNoFault) {
  const struct {
    const char* carrier;
    const char* line;
  } rows[] = {
      {"1", "bond0 late: 0 of 2 links work, 2 expected; not known: eth0, eth1"},
      {"0", "bond0 critical 0: 0 of 2 links work, 2 expected; not known: eth0, eth1"},
  };
  for (const auto& row : rows) {
    MachineFolder machine(Link("bond0", "up", true, row.carrier));
    machine.Write(Link("eth0", "up", true));
    machine.Write(Link("eth1", "up", true));
    machine.Write({{"/sys/class/net/bond0/bonding/slaves", "eth0 eth1\n"}});
    machine.Hang("/sys/class/net/eth0/operstate");
    machine.Hang("/sys/class/net/eth1/operstate");
    NetworkProvider provider(machine.Factory(), {}, kImpatient);
    const Texts expected = {"eth0 late: no answer for 0 s; the device or its driver may hang",
                            "eth1 late: no answer for 0 s; the device or its driver may hang", row.line};
    EXPECT_EQ(ReadUntil(provider, 0, expected), expected);
    machine.Release();
  }
}

}  // namespace
}  // namespace emstatus::test
