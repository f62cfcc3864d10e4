// A started module under load: a scan about every 100 ms, requests from four threads, replies that wake the
// poller. Runs EM_SOAK_SECONDS seconds (2 by default); for the sanitizers, which find what the load brings
// out.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "data/Command.h"
#include "data/OwnedCommand.h"
#include "module/EM_Status.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TraceCapture.h"

namespace emstatus::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kConfiguration = R"([Info]
Filename=EM_STATUS.ini
LayoutVersion=4
[Configuration]
InitialPollingDelaySeconds=0
AdvancedPollingCycles=4
StatusValueQueryFail=3
[StatusMapping]
OK=1
Warning=2
Error=3
[System]
Subsystems=Cooling Power
[Subsystem.Cooling]
DisplayName=Cooling
Components=Fans
[Component.Fans]
DisplayNameRequest=<CMD Context="TRIQ" OC="1" OE="4"/>
HandleCabinets=1
NrInstancesRequest=<CMD Context="TRIQ" OC="1" OE="1"/>
StatusRequest=<CMD Context="TRIQ" OC="1" OE="2"/>
CssRequest=<CMD Context="TRIQ" OC="1" OE="3"/>
RedundancyRequest=<CMD Context="TRIQ" OC="1" OE="5"/>
DesignationRequest=<CMD Context="TRIQ" OC="1" OE="4"/>
StatusConfirm=<CMD Context="TRIQ" OC="1" OE="6"/>
Status.1=OK 0
Status.2=Error 1
Redundancy.1=1 0
[Subsystem.Power]
DisplayName=Power
Components=Supply
[Component.Supply]
DisplayName=Supply
Category=Mandatory
StatusRequest=<CMD Context="TRIQ" OC="2"/>
Status.1=OK 0
[Component.Supply.alt]
DisplayName=Supply, asked otherwise
StatusRequest=<CMD Context="TRIQ" OC="3"/>
Status.1=Warning 0
)";

/// Answers that change from scan to scan, for as many scans as the longest run has.
std::string Script() {
  std::string script =
      "1030: number 2\n1031-*-0: number 0\n1031: number 1\n1033: status 0\n1-4: text Fans\n1-3: number 1\n"
      "1-5: number 0\n1-6: number 0\n3: number 0\n";
  for (int scan = 0; scan < 40; ++scan) {
    const std::string at = " @" + std::to_string(scan) + ": ";
    script += "1-1" + at + "number " + std::to_string(scan % 5) + "\n";
    script += "1-2" + at + "number " + std::to_string(scan % 3) + "\n";
    script += "2" + at + (scan % 4 == 0 ? "status 6" : "number 0") + "\n";
  }
  return script + "1-1: number 4\n1-2: raw 1\n2: number 0\n";
}

TEST(SoakTest, RequestsRepliesAndScansGoTogether) {
  const char* wanted = std::getenv("EM_SOAK_SECONDS");
  const auto end = Clock::now() + std::chrono::seconds(wanted == nullptr ? 2 : std::atoi(wanted));
  const TemporaryDirectory folder;
  folder.Write("EM_STATUS.ini", kConfiguration);
  std::filesystem::current_path(folder.Path());
  ScriptedHost host(Script());
  std::atomic<int> scans{0};
  host.onRequest = [&scans](std::uint32_t operation, int) { scans += operation == 0x1030; };
  EM_Status module;
  module.SetCabNr(0);
  const std::uint32_t extension = 4;
  module.SetServerSeList(&extension, 1);
  ASSERT_TRUE(module.Start(&host, 0));
  module.StartThreads();

  std::vector<std::thread> users;
  for (int user = 0; user < 4; ++user) {
    users.emplace_back([&module, end] {
      for (std::uint32_t round = 0; Clock::now() < end; ++round) {
        OwnedCommand request({.operation = 0x2300 + round % 0x40, .object = round % 3, .cabinet = round % 5});
        if (round % 7 == 0) request.AddData(OwnedValue::Text("Fans"));
        module.OnRequest(request);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
  }
  users.emplace_back([&] {
    while (Clock::now() < end) {
      OwnedCommand reply({.operation = 0x21DE});
      SetStatus(reply, 255);
      module.OnReply(reply);
      Trace().Take();
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  });
  for (std::thread& user : users) user.join();
  module.OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
  EXPECT_TRUE(module.Stop());
  EXPECT_GT(scans, 3);
  std::printf("%d scans\n", scans.load());
  std::filesystem::current_path("/");
}

}  // namespace
}  // namespace emstatus::test
