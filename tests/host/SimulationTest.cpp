#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include "config/Simulation.h"
#include "host/simulation/SimulateArguments.h"
#include "host/simulation/SimulationFolder.h"
#include "host/simulation/SimulationNames.h"
#include "host/simulation/SimulationTracker.h"
#include "host/simulation/SimulationWatch.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::host {
namespace {

using namespace std::chrono_literals;
using test::TemporaryDirectory;
using Names = std::set<std::string, std::less<>>;

constexpr const char* kName = "EM_STATUS_simu.ini";
constexpr const char* kHead = "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=1\n[Components]\n";

WallTime Now() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

std::string MessageOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(SimulationFile, IsUnderstoodAsTheModuleUnderstandsIt) {
  const std::string head = kHead;
  const std::string longName(600, 'L');
  const std::string texts[] = {
      head + "A.MappedStatus=3\nB.ObjectStatus=0x10\nC.IsCss=1\n",
      head + "A.ObjectStatus=010\n  B . IsCss = 1 ; why\nD.MappedStatus=300\nE.ObjectStatus=-1\n",
      head + ".F.MappedStatus=1\nG..MappedStatus=2\nH.a.MappedStatus=1\nI=1\n.=1\nJ.mappedstatus=2\n",
      head +
          "A.MappedStatus=\nA.MappedStatus=2\nK.MappedStatus=word\nK.ObjectStatus=99999999999999999999999\n",
      head + "M.MappedStatus=1\n=5\nN.MappedStatus=1\n",
      head + "O.MappedStatus=1\n[ Components]\nP.MappedStatus=1\n[Components]\nQ.MappedStatus=1\n",
      head + longName + ".MappedStatus=" + std::string(600, ' ') + "2\nR.MappedStatus=1\n",
      head + ";S.MappedStatus=1\r\n\t;\r\n S.IsCss=1=2\r\nT.Mapped;Status=1\nU.MappedStatus=2;3",
      "[Config]\nActive=0\nActive=1\n[Info]\nFilename=EM_STATUS_simu.ini\n[Components]\nV.MappedStatus=1\n",
      "[Info]\nFilename=em_status_simu.ini\n[Config]\nActive=1\n[Components]\nW.MappedStatus=1\n",
      "[Info]x\n Filename = EM_STATUS_simu.ini ; it\n[Config\n[Config]\nActive=0x1\n",
      "",
      std::string(kHead) + "X.MappedStatus=1" + std::string(1, '\0') + "2\nY.Mapped",
      WriteSimulation({{"A", {2, -1, -1}}, {"B", {0, 7, 0}}, {"Fan 0-1", {255, -1, 1}}}, Now()),
      "absent",
      head + "Z.MappedStatus=4\n",
  };
  const TemporaryDirectory folder;
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  Simulation module;
  SimulationTracker tracker{SimulationFolder(folder.Path().string())};
  Names seen;
  for (const std::string& text : texts) {
    if (text == "absent") {
      std::filesystem::remove(kName);
    } else {
      folder.Write(kName, text);
    }
    module.FollowFile();
    tracker.ScanBegins();
    tracker.ScanEnds();
    const SimulationState state = tracker.State();
    for (const auto& [name, part] : state.parts) {
      seen.insert(name);
    }
    for (const std::string& name : seen) {
      const auto expected = module.Find(name);
      const auto found = state.parts.find(name);
      ASSERT_EQ(found != state.parts.end(), expected.has_value()) << name << " in\n" << text;
      if (expected) {
        const SimulatedPart same{expected->mappedStatus, expected->objectStatus, expected->isCss};
        EXPECT_EQ(found->second, same) << name << " in\n" << text;
      }
    }
    if (!state.InForce()) {
      EXPECT_FALSE(module.Find("A")) << text;
    }
  }
  for (const char* name : {"N", "P", "Q", "R", "V", "W"}) {
    EXPECT_EQ(module.Find(name).has_value(), seen.contains(name)) << name;
  }
  std::filesystem::current_path(before);
  EXPECT_TRUE(seen.contains("Fan 0-1"));
  EXPECT_EQ(tracker.State().kept.size(), seen.size() - 1) << "all but Z are from before";
}

TEST(SimulationFile, EndStandsInTheFile) {
  const SimulatedParts parts{{"A", {2, -1, 1}}};
  const WallTime end = Now() + 5s;
  const SimulationFile timed = ReadSimulation(WriteSimulation(parts, end));
  EXPECT_EQ(timed.parts, parts);
  EXPECT_EQ(timed.until, end);
  EXPECT_FALSE(timed.IsOver(end - 1s));
  EXPECT_TRUE(timed.IsOver(end));
  const SimulationFile endless = ReadSimulation(WriteSimulation(parts, std::nullopt));
  EXPECT_FALSE(endless.byHand || endless.IsOver(end));
  for (const char* until : {"", "[Emhost]\n", "[Emhost]\nUntil=2026-13-01T00:00:00Z\n",
                            "[Emhost]\nUntil=2000-01-01T00:00:00Z!\n", "Until=2000-01-01T00:00:00Z\n"}) {
    const SimulationFile file = ReadSimulation(std::string(kHead) + "A.MappedStatus=1\n" + until);
    EXPECT_TRUE(file.active && file.byHand && !file.IsOver(end)) << until;
  }
}

TEST(SimulationTracker, TellsWhatAnEndingScanStillShows) {
  const TemporaryDirectory folder;
  const SimulationFolder files(folder.Path().string());
  SimulationTracker tracker(files);
  files.Replace(WriteSimulation({{"A", {3, -1, -1}}}, std::nullopt));
  tracker.ScanBegins();
  tracker.ScanEnds();
  files.Remove();
  EXPECT_TRUE(tracker.State().InForce()) << "the module has not read it again";
  tracker.ScanBegins();
  EXPECT_TRUE(tracker.State().parts.contains("A")) << "the tree is that of the scan before";
  tracker.ScanEnds();
  EXPECT_FALSE(tracker.State().InForce());
  files.Replace(WriteSimulation({{"B", {3, -1, -1}}}, Now()));
  tracker.ScanBegins();
  EXPECT_EQ(tracker.State().kept, Names{"A"});
}

constexpr const char* kConfiguration = R"([StatusMapping]
OK=1
Good=1
Error=3
Huge=256
[System]
Subsystems=Cooling  Other None
[Subsystem.Cooling]
DisplayName=Cooling
Components=Fans Constant Bare Odd SnmpFans
[Subsystem.Other]
DisplayName=Other
Components=Disks Use Unmapped
[Subsystem.None]
Components=Hidden
[Component.Fans]
DisplayName=Fans
InstanceName=Fan
NrInstancesRequest=<CMD/>
Status.a=OK 0
[Component.Fans.alt]
DisplayName=Fans
InstanceName=Rotor
NrInstancesRequest=<CMD/>
Status.a=OK 0
[Component.Constant]
DisplayNameRequest=<CMD/>
NrInstances=4
NrInstancesRequest=<CMD/>
Redundancy.a=1 1
[Component.Bare]
DisplayName=Bare
NrInstancesRequest=<CMD/>
Status.a=OK 0
[Component.Odd]
DisplayName=Odd
InstanceName=v1.
NrInstancesRequest=<CMD/>
Status.a=OK 0
[Component.SnmpFans]
DisplayName=Fans
StatusRequest=<CMD Context="SNMP"/>
Status.a=OK 0
[Component.Disks]
DisplayName=Disks
InstanceName=Disk
InstanceBaseIndex=1
HandleCabinets=1
NrInstancesRequest=<CMD/>
Status.a=OK 0
[Component.Use]
DisplayName=Use
Status.a=OK 0
[Component.Unmapped]
DisplayName=Use
[Component.Hidden]
DisplayName=Hidden
Status.a=OK 0
)";

TEST(SimulationNames, WhatTheConfigurationCanKnow) {
  const SimulationNames names(kConfiguration);
  for (const char* name :
       {"Fan0", "Fan12", "Rotor0", "Constant", "Bare0", "Disk1", "Disk1-0", "Disk20-7", "Use"}) {
    EXPECT_EQ(MessageOf([&] { names.Check(name); }), "") << name;
  }
  const struct {
    const char* name;
    const char* message;
  } rows[] = {
      {"Fans", "name one of them: Fan0, Fan1, ..."},
      {"Disk", "name one of them: Disk1, Disk2, ..."},
      {"Disk0", "can be no instance of Disks: the first is Disk1, with extension cabinets Disk1-0"},
      {"Fan01", "can be no instance of Fans"},
      {"Fan1-0", "can be no instance of Fans"},
      {"Disk1-", "can be no instance of Disks"},
      {"Disk1-2-3", "can be no instance of Disks"},
      {"Constant0", "nearest are Constant,"},
      {"use", "nearest are Use,"},
      {"Fann3", "nearest are Fan3,"},
      {"SnmpFans", "knows no \"SnmpFans\""},
      {"Unmapped", "knows no"},
      {"Hidden", "knows no"},
      {"", "knows no"},
      {"v1.0", "a dot ends the name"},
      {"Fans.alt", "a dot ends the name"},
  };
  for (const auto& row : rows) {
    const std::string message = MessageOf([&] { names.Check(row.name); });
    EXPECT_NE(message.find(row.message), std::string::npos) << row.name << ": " << message;
  }
  EXPECT_EQ(names.Advice("Disk1"), "on a machine with extension cabinets, the server's Disk1 is Disk1-0.");
  EXPECT_EQ(names.Advice("Disk1-0") + names.Advice("Fan0") + names.Advice("Use"), "");
}

TEST(SimulateArguments, Settings) {
  const SimulationNames names(kConfiguration);
  EXPECT_EQ(
      ParseSettings({"Fan0.IsCss=1", "Use=Good", "Fan0=Error", "Fan1=255", "Disk1.ObjectStatus=-7"}, names),
      (SimulatedParts{
          {"Disk1", {0, -7, -1}}, {"Fan0", {3, -1, 1}}, {"Fan1", {255, -1, -1}}, {"Use", {1, -1, -1}}}));
  const struct {
    std::vector<std::string> settings;
    const char* message;
  } rows[] = {
      {{"Fan0"}, "COMPONENT=STATUS is expected"},
      {{"=OK"}, "COMPONENT=STATUS is expected"},
      {{"Fan0="}, "COMPONENT=STATUS is expected"},
      {{"Fan0=error"}, "one of Error, Good, OK, or a number from 0 to 255"},
      {{"Fan0=256"}, "is no status"},
      {{"Fan0=-1"}, "is no status"},
      {{"Fan0=1x"}, "is no status"},
      {{"Fan0=Huge"}, "is no status"},
      {{"Fan0.Status=1"}, "only ObjectStatus and IsCss"},
      {{"Fan0.ObjectStatus=-1"}, "not -1"},
      {{"Fan0.ObjectStatus=2147483648"}, "32 bits"},
      {{"Fan0.ObjectStatus=OK"}, "whole number"},
      {{"Fan0.IsCss=2"}, "\"Fan0.IsCss=2\": 1 (the"},
      {{"Fan0=1", "Fan0.MappedStatus=1"}, "said twice of Fan0"},
      {{"Fan0=1", "Fan0.ObjectStatus=1"}, "exclude each other"},
  };
  for (const auto& row : rows) {
    const std::string message = MessageOf([&] { ParseSettings(row.settings, names); });
    EXPECT_NE(message.find(row.message), std::string::npos) << row.settings[0] << ": " << message;
  }
  const SimulationNames odd(
      "[System]\nSubsystems=S\n[Subsystem.S]\nDisplayName=S\nComponents=[A\n[Component.[A]\n"
      "DisplayName=A\nStatus.a=OK 0\n[StatusMapping]\nOK=1\n");
  EXPECT_NE(MessageOf([&] { ParseSettings({"[A=1"}, odd); }).find("cannot hold"), std::string::npos);
}

TEST(SimulateArguments, Durations) {
  EXPECT_EQ(ParseDuration("90s"), 90s);
  EXPECT_EQ(ParseDuration("10m"), 600s);
  EXPECT_EQ(ParseDuration("2h"), 7200s);
  EXPECT_EQ(ParseDuration("8784h"), 8784h);
  EXPECT_EQ(ParseDuration("ever"), std::nullopt);
  for (const char* text :
       {"", "s", "10", "0m", "-1m", "1d", "1.5h", "10 m", "8785h", "99999999999h", "forever"}) {
    EXPECT_NE(MessageOf([&] { ParseDuration(text); }).find("is no time"), std::string::npos) << text;
  }
}

TEST(SimulationFolder, ReadersNeverSeeHalfAFile) {
  const TemporaryDirectory folder;
  const SimulationFolder files(folder.Path().string());
  const std::string texts[] = {std::string(200000, 'a'), std::string(70000, 'b')};
  files.Replace(texts[1]);
  std::atomic<bool> done{false};
  std::thread writer([&] {
    for (int i = 0; i < 30; ++i) {
      files.Replace(texts[i % 2]);
    }
    done = true;
  });
  while (!done) {
    const auto text = files.Read();
    const bool whole = text == texts[0] || text == texts[1];
    EXPECT_TRUE(whole) << (text ? text->size() : 0);
    if (!whole) {
      break;
    }
  }
  writer.join();
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1)
      << "nothing is left over";
  const auto mode = std::filesystem::status(files.Path()).permissions();
  EXPECT_NE(mode & std::filesystem::perms::others_read, std::filesystem::perms::none)
      << "emhost may be another user";
}

TEST(SimulationFolder, RemovesOnlyWhatItMeans) {
  const TemporaryDirectory folder;
  const SimulationFolder files(folder.Path().string());
  EXPECT_FALSE(files.Look() || files.Read() || files.Remove() || files.RemoveIf("old"));
  for (int i = 0; i < 60; ++i) {
    files.Replace("old");
    std::atomic<bool> replaced{false};
    const auto remove = [&] {
      while (!replaced) {
        files.RemoveIf("old");
      }
    };
    std::thread first(remove);
    std::thread second(remove);
    files.Replace("old");
    files.Replace("new");
    replaced = true;
    first.join();
    second.join();
    ASSERT_EQ(files.Read(), "new") << "taken away with the old one, try " << i;
  }
  EXPECT_FALSE(files.RemoveIf("old"));
  EXPECT_TRUE(files.RemoveIf("new"));
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(SimulationFolder, SaysWhatCannotBeDone) {
  const SimulationFolder missing("/no/such/folder");
  EXPECT_NE(MessageOf([&] { missing.Replace("x"); }).find("cannot write in /no/such/folder: No such file"),
            std::string::npos);
  const TemporaryDirectory folder;
  const SimulationFolder blocked(folder.Path().string());
  std::filesystem::create_directory(blocked.Path());
  for (const auto& action : {std::function<void()>([&] { blocked.Replace("x"); }),
                             {[&] { blocked.Read(); }},
                             {[&] { blocked.Remove(); }}}) {
    EXPECT_NE(MessageOf(action).find(kName), std::string::npos);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

bool Wakes(const SimulationWatch& watch) {
  pollfd descriptor{watch.Descriptor(), POLLIN, 0};
  return poll(&descriptor, 1, 10000) == 1;
}

TEST(SimulationWatch, EndsInTimeWhatIsItsOwn) {
  const TemporaryDirectory folder;
  const SimulationFolder files(folder.Path().string());
  const SimulatedParts parts{{"A", {3, -1, -1}}};
  files.Replace(WriteSimulation(parts, Now()));
  SimulationWatch watch(files);
  EXPECT_FALSE(files.Look()) << "over before emhost began";
  EXPECT_FALSE(watch.Take()) << "that is no news";

  for (const std::string& text : {std::string(kHead) + "A.MappedStatus=3\n",
                                  WriteSimulation(parts, std::nullopt), WriteSimulation(parts, Now() + 1h)}) {
    files.Replace(text);
    ASSERT_TRUE(Wakes(watch));
    EXPECT_TRUE(watch.Take());
    EXPECT_FALSE(watch.Take());
    EXPECT_EQ(files.Read(), text);
  }
  files.Replace(WriteSimulation(parts, Now() + 2s));
  EXPECT_TRUE(watch.Take());
  ASSERT_TRUE(Wakes(watch));
  while (!watch.Take()) {
    ASSERT_TRUE(Wakes(watch));
  }
  EXPECT_FALSE(files.Look());
  EXPECT_FALSE(watch.TakeFailure());
}

}  // namespace
}  // namespace emstatus::host
