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
  return {{folder + "/operstate", operstate + "\n"},
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
    NetworkProvider provider(machine.Files(),
                             row.required ? std::vector<std::string>{"eth0"} : std::vector<std::string>{});
    EXPECT_EQ(Line(ReadAt(provider, 0).back()), row.line);
  }
}

TEST(NetworkLinks, ALinkThatWasUpIsCriticalWhenItGoesDown) {
  MachineFolder machine(Link("eth0", "up", true));
  NetworkProvider provider(machine.Files(), {});
  machine.Write({{"/sys/class/net/eth0/speed", "-1"}});
  EXPECT_EQ(Lines(ReadAt(provider, 0)), (Texts{"eth0 good"})) << "an unknown speed is no speed";
  machine.Write(Link("eth0", "down", true, "0"));
  EXPECT_EQ(Lines(ReadAt(provider, 2)),
            (Texts{"eth0 critical: no carrier, though it is switched on; up expected"}));
  machine.Fail("/sys/class/net/eth0/operstate", EIO);
  EXPECT_EQ(Lines(ReadAt(provider, 4)),
            (Texts{"eth0 sensor-fault: cannot be read: operstate: Input/output error"}));
}

TEST(NetworkLinks, OnlyLinksThatStandForSomething) {
  MachineFolder machine;
  EXPECT_TRUE(
      ReadAt(*std::make_unique<NetworkProvider>(machine.Files(), std::vector<std::string>{}), 0).empty());
  for (const char* name : {"lo", "veth1a2b", "tun0", "docker0", "vlan5"}) {
    machine.Write(Link(name, "down", true, "0"));
    machine.Remove(std::string("/sys/class/net/") + name + "/device");
  }
  machine.Write({{"/sys/class/net/docker0/bridge/stp_state", "0"},
                 {"/sys/class/net/vlan5/lower_eth0/ifindex", "2"},
                 {"/sys/class/net/bonding_masters", "\n"}});
  NetworkProvider provider(machine.Files(), {});
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"docker0 inactive: no carrier; a virtual link that nothing is connected to",
                   "vlan5 inactive: no carrier; a virtual link that nothing is connected to"}));
}

TEST(NetworkBonds, AreRedundancyGroups) {
  MachineFolder machine(Link("bond0", "up", true));
  machine.Write(Link("eth0", "up", true));
  machine.Write(Link("eth1", "up", true));
  machine.Write({{"/sys/class/net/bond0/bonding/slaves", "eth0 eth1\n"},
                 {"/sys/class/net/bond0/bonding/min_links", "0\n"},
                 {"/sys/class/net/eth1/bonding_slave/mii_status", "up\n"}});
  NetworkProvider provider(machine.Files(), {});
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

}  // namespace
}  // namespace emstatus::test
