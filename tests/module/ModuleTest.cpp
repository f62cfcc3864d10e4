#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

#include "data/Command.h"
#include "data/JsonWriter.h"
#include "data/OwnedCommand.h"
#include "module/CommandTrace.h"
#include "module/EM_Status.h"
#include "platform/CDebugClient.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TraceCapture.h"
#include "tests/support/TraceLevel.h"

namespace emstatus::test {
namespace {

/// The base class with its operations laid open.
class PlainModule : public CExtensionModule {
 public:
  using CExtensionModule::EventSourceName;
  using CExtensionModule::IsAgentlessHost;
  using CExtensionModule::IsRemoteHost;
  using CExtensionModule::SendCommandToHost;
  using CExtensionModule::SendEventToHost;
  using CExtensionModule::SendRequestToCabinet;
  using CExtensionModule::SendRequestToHost;
  using CExtensionModule::SendRequestToModule;
  using CExtensionModule::SetModuleState;
};

class ModuleTest : public testing::Test {
 protected:
  ModuleTest() {
    SetLevel("5");
    std::filesystem::current_path(folder_.Path());
    Trace().Take();
  }
  ~ModuleTest() override { std::filesystem::current_path("/"); }

  static void SetLevel(const char* level) {
    setenv("QX_LOG_DEBUG_LEVEL", level, 1);
    debugClient.Init("EM_STATUS");
  }

  void Configure(const std::string& components) {
    folder_.Write("EM_STATUS.ini",
                  "[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=4\n[Configuration]\n"
                  "InitialPollingDelaySeconds=0\nPollingRateSeconds=0\nAdvancedPollingRateSeconds=0\n"
                  "[StatusMapping]\nOK=1\nWarning=2\nError=3\n[System]\nSubsystems=S\n[Subsystem.S]\n"
                  "DisplayName=S\n" +
                      components);
  }

  static std::string Text(const HostCommand& command) { return JsonText(command.document); }

  TemporaryDirectory folder_;
};

TEST_F(ModuleTest, BaseClassGuardsEveryCallOfTheHost) {
  PlainModule module;
  OwnedCommand lost({.operation = 1});
  EXPECT_FALSE(module.SendRequestToHost(lost));
  EXPECT_EQ(GetInt(lost, "ST", 99), 6U);
  module.SendEventToHost(lost);
  module.SendCommandToHost(lost);
  EXPECT_FALSE(module.SetModuleState(true));
  EXPECT_STREQ(module.EventSourceName(), "Talvern Host Warden");
  EXPECT_FALSE(module.IsAgentlessHost());

  ScriptedHost host("");
  module.Start(&host, 0);
  module.SetCabNr(9);
  const struct {
    std::uint32_t kind;
    bool agentless;
    bool remote;
    const char* source;
  } kinds[] = {{5, true, false, "Talvern Agentless Service"},
               {8, false, true, "Talvern Host Warden"},
               {10, true, true, "Talvern Host Warden"},
               {0, false, false, "Talvern Host Warden"}};
  for (const auto& row : kinds) {
    host.kind = row.kind;
    EXPECT_EQ(module.IsAgentlessHost(), row.agentless) << row.kind;
    EXPECT_EQ(module.IsRemoteHost(), row.remote) << row.kind;
    EXPECT_STREQ(module.EventSourceName(), row.source) << row.kind;
  }

  Trace().Take();
  OwnedCommand own;
  module.SendRequestToHost(own);
  OwnedCommand addressed({.operation = 1, .cabinet = 4});
  module.SendRequestToHost(addressed);
  module.SendRequestToCabinet(addressed, 3);
  module.SendRequestToModule(addressed, 0x120034);
  OwnedCommand event;
  module.SendEventToHost(event);
  module.SendCommandToHost(event);
  const std::vector<std::string> expected = {
      R"(@ request {"SIP":{"CMD":[{"CA":9}]}})",
      R"(@ request {"SIP":{"CMD":[{"OC":1,"OE":0,"OI":0,"CA":4}]}})",
      R"(@ request {"SIP":{"CMD":[{"OC":1,"OE":0,"OI":0,"CA":3,"ST":1}]}})",
      R"(@ request {"SIP":{"CMD":[{"OC":1,"OE":0,"OI":0,"CA":3,"ST":1,"MI":1179700}]}})",
      R"(@ event {"SIP":{"CMD":[{"ST":0}]}})",
      R"(@ command {"SIP":{"CMD":[{"ST":0}]}})",
  };
  EXPECT_EQ(Trace().Take(), expected);
  module.SetCabNr(0);
}

TEST_F(ModuleTest, CommandLinesCutWhatTheyShowToItsWidth) {
  const TraceLevel level(1);
  OwnedCommand command({.operation = 0x1FEDC, .extension = 0x2BA98, .object = 0x3F654, .cabinet = 70000});
  SetMember(*EnsureCurrentCommand(command), "MI", OwnedValue::UInt32(0x8ABC9DEF));
  SetStatus(command, 0x1FE);
  Trace().Take();
  TraceCommand(1, "TAG", command);
  EXPECT_EQ(Trace().Take(),
            std::vector<std::string>{"\nTAG                 : OC 0xFEDC-0xBA98 OID 0xF654 CABID 70000 MID "
                                     "0x8ABC9DEF Stat 0xFE"});
}

TEST_F(ModuleTest, BaseClassRefusesRequestsWhereverThereIsRoom) {
  PlainModule module;
  EXPECT_FALSE(module.GetModuleInfo(nullptr));
  EXPECT_STREQ(module.GetModuleName(), "EM_XXX");
  OwnedCommand command;
  command.current = 3;
  EXPECT_FALSE(module.OnRequest(command));
  EXPECT_EQ(Text(command), R"({"SIP":{"CMD":[{},{},{},{"ST":1}]}})");
  command.current = 0xFFFFFFFF;
  EXPECT_FALSE(module.OnRequest(command));
  EXPECT_EQ(Text(command), R"({"SIP":{"CMD":[{},{},{},{"ST":1}]}})");
  HostCommand empty{};
  EXPECT_FALSE(module.OnRequest(empty));
  EXPECT_EQ(Text(empty), "null");
}

TEST_F(ModuleTest, NotificationsAreNamedAndForwarded) {
  struct Forwarded : PlainModule {
    std::uint32_t OnModuleNotification(std::uint32_t code, std::uint32_t parameter, void* data) override {
      return data == this ? code + parameter : 0;
    }
  } module;
  const struct {
    std::uint32_t code;
    const char* line;
  } rows[] = {
      {0x20000, "\nEM_XXX              : *** HWN_SWITCH_SHUTDOWN *** \n"},
      {0x20001, "\nEM_XXX              : *** HWN_SWITCH_REQUEST_ENABLED *** \n"},
      {0x30000, "\nEM_XXX              : *** HWN_SYSTEM_SHUTDOWN *** \n"},
      {0x40000, "\nEM_XXX              : *** HWN_POWERSTATE_SUSPEND *** \n"},
      {0x40001, "\nEM_XXX              : *** HWN_POWERSTATE_STANDBY *** \n"},
      {0x40002, "\nEM_XXX              : *** HWN_POWERSTATE_RESUME *** \n"},
      {0x40003, "\nEM_XXX              : *** HWN_POWERSTATE_AC_OFFLINE *** \n"},
      {0x40004, "\nEM_XXX              : *** HWN_POWERSTATE_AC_ONLINE *** \n"},
      {0x40005, nullptr},
      {7, nullptr},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(module.OnNotification(row.code, 2, &module), row.code + 2);
    const auto lines = Trace().Take();
    ASSERT_GE(lines.size(), 3U);
    char notify[96];
    std::snprintf(notify, sizeof notify,
                  "\n\nEM_XXX              : ## NOTIFY: Code = 0Xx%02X, param = 0x00000002", row.code);
    EXPECT_EQ(lines.front(), notify);
    EXPECT_EQ(row.line != nullptr, lines.size() > 3) << row.code;
    EXPECT_EQ(lines[1], row.line != nullptr ? row.line : lines[lines.size() - 2]);
    EXPECT_EQ(lines[lines.size() - 2], "\nEM_XXX              :   call OnModuleNotification()...");
    EXPECT_EQ(lines.back(), "\nEM_XXX              :   ... OnModuleNotification() completed");
  }
}

TEST_F(ModuleTest, ExtensionCabinetsAreCountedByTheLowByte) {
  Configure(
      "Components=A\n[Component.A]\nDisplayName=A\nHandleCabinets=1\n"
      "StatusRequest=<CMD Context=\"TRIQ\" OC=\"1\"/>\nStatus.1=OK 0\n");
  std::vector<std::uint32_t> cabinets(258, 7);
  cabinets[0] = 5;
  ScriptedHost host("1: number 0");
  EM_Status module;
  module.SetCabNr(3);
  EXPECT_TRUE(module.SetServerSeList(cabinets.data(), 256));
  EXPECT_TRUE(module.SetServerSeList(cabinets.data(), 257));
  EXPECT_TRUE(module.SetServerSeList(nullptr, 1));
  ASSERT_TRUE(module.Start(&host, 0));
  host.onRequest = [&](std::uint32_t operation, int scan) {
    if (operation == 1 && scan == 1) module.OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
  };
  module.StartThreads();
  EXPECT_TRUE(Trace().WaitFor("EXIT Thread Status"));
  module.Stop();
  int found = 0;
  for (const auto& line : Trace().Take()) found += line.find("checking cabinet") != std::string::npos;
  EXPECT_EQ(found, 2);
  PlainModule().SetCabNr(0);
}

TEST_F(ModuleTest, StopGivesUpOnAThreadThatTheHostHolds) {
  Configure("");
  ScriptedHost host("");
  EM_Status module(20);
  host.onRequest = [](std::uint32_t, int) { Trace().WaitFor("Give up after 30 seconds!"); };
  ASSERT_TRUE(module.Start(&host, 0));
  module.StartThreads();
  EXPECT_TRUE(Trace().WaitFor("Find status signal devices"));
  EXPECT_TRUE(module.Stop());
  const auto lines = Trace().Take();
  EXPECT_TRUE(Holds(lines, "\nEM_STATUS           ... thread KILLED!"));
  EXPECT_TRUE(Holds(lines, "\nEM_STATUS           ... polling thread terminated!"));
  EXPECT_TRUE(Holds(lines, "\n\n### Stop of module EM_STATUS completed successfully ###"));
}

TEST_F(ModuleTest, DestructionEndsAThreadThatWasNotStopped) {
  Configure("");
  ScriptedHost host("");
  {
    EM_Status module;
    ASSERT_TRUE(module.Start(&host, 0));
    module.StartThreads();
    module.StartThreads();
    EXPECT_TRUE(Trace().WaitFor("Status polling thread is running already!"));
  }
  const auto lines = Trace().Take();
  EXPECT_TRUE(Holds(lines, "\nEM_STATUS (QUERY)   : ## EXIT Thread Status Thread_StatusPolling\n"));
}

TEST_F(ModuleTest, AnExceptionInTheScanEndsTheThreadAlone) {
  Configure("");
  ScriptedHost host("");
  host.onRequest = [](std::uint32_t, int) { throw 1; };
  EM_Status module;
  ASSERT_TRUE(module.Start(&host, 0));
  module.StartThreads();
  EXPECT_TRUE(Trace().WaitFor("THREAD_RETURN"));
  EXPECT_TRUE(module.Stop());
  EXPECT_TRUE(Holds(Trace().Take(),
                    "\n####                   Exception in StatusPolling Thread !!               ####"));
}

TEST_F(ModuleTest, ASinkThatThrowsHurtsNobody) {
  Configure("");
  ScriptedHost host("");
  Trace().throws = true;
  {
    EM_Status module;
    EXPECT_TRUE(module.Start(&host, 0));
    module.OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
    module.StartThreads();
    EXPECT_TRUE(module.Stop());
  }
  Trace().throws = false;
}

TEST_F(ModuleTest, StartingAgainReplacesTheConfiguration) {
  Configure("Components=A\n[Component.A]\nDisplayName=First\nStatus.1=OK 0\n");
  ScriptedHost host("");
  EM_Status module;
  const auto ask = [&module](std::uint32_t operation) {
    OwnedCommand command({.operation = operation});
    module.OnRequest(command);
    return Text(command);
  };
  EXPECT_EQ(ask(0x2300), R"({"SIP":{"CMD":[{"OC":8960,"OE":0,"OI":0,"CA":0,"ST":0,"DA":0}]}})");
  EXPECT_TRUE(module.Start(&host, 0));
  EXPECT_TRUE(module.Start(&host, 0));
  EXPECT_EQ(ask(0x2300), R"({"SIP":{"CMD":[{"OC":8960,"OE":0,"OI":0,"CA":0,"ST":0,"DA":1}]}})");
  EXPECT_EQ(ask(0x2308), R"({"SIP":{"CMD":[{"OC":8968,"OE":0,"OI":0,"CA":0,"ST":0,"DA":"First"}]}})");
  EXPECT_EQ(ask(0x2339), R"({"SIP":{"CMD":[{"OC":9017,"OE":0,"OI":0,"CA":0,"ST":19}]}})");
  EXPECT_EQ(ask(0x2333), R"({"SIP":{"CMD":[{"OC":9011,"OE":0,"OI":0,"CA":0,"ST":2}]}})");
  folder_.Write("EM_STATUS.ini", "[Info]\nFilename=other\n");
  EXPECT_FALSE(module.Start(&host, 0));
  EXPECT_EQ(ask(0x2300), R"({"SIP":{"CMD":[{"OC":8960,"OE":0,"OI":0,"CA":0,"ST":0,"DA":1}]}})")
      << "a file that cannot be used replaces nothing";
}

TEST_F(ModuleTest, StartingAgainKeepsTheTreeAndReportsOnlyWhatIsNew) {
  SetLevel("1");
  const auto section = [](const char* name) {
    return std::string("[Component.") + name + "]\nDisplayName=" + name + "\nNrInstancesRequest=" +
           "<CMD Context=\"TRIQ\" OC=\"1\"/>\nStatusRequest=<CMD Context=\"TRIQ\" OC=\"1\"/>\nStatus.1=Error 1\n";
  };
  Configure("Components=A B\n" + section("A") + section("B"));
  ScriptedHost host("1: number 1\n");
  EM_Status module;
  host.onRequest = [&](std::uint32_t operation, int scan) {
    if (operation != 0x1030) return;
    if (scan == 1) Configure("Components=A C\n" + section("A") + section("C"));
    if (scan < 4) module.Start(&host, 0);
    if (scan == 4) module.OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
  };
  ASSERT_TRUE(module.Start(&host, 0));
  module.StartThreads();
  EXPECT_TRUE(Trace().WaitFor("EXIT Thread Status"));
  module.Stop();
  std::vector<std::string> events = Trace().Take();
  std::erase_if(events, [](const std::string& line) { return !line.starts_with("@ event"); });
  const std::vector<std::string> expected = {
      R"(@ event {"SIP":{"CMD":[{"OC":8994,"OE":0,"OI":0,"CA":0,"DA":3,"ST":0}]}})",
      R"(@ event {"SIP":{"CMD":[{"OC":8994,"OE":1,"OI":0,"CA":0,"DA":3,"ST":0}]}})",
      R"(@ event {"SIP":{"CMD":[{"OC":8975,"OE":0,"OI":0,"CA":0,"DA":3,"ST":0}]}})",
      R"(@ event {"SIP":{"CMD":[{"OC":8994,"OE":1,"OI":0,"CA":0,"DA":3,"ST":0}]}})",
  };
  EXPECT_EQ(events, expected);
  OwnedCommand removed({.operation = 0x2333});
  removed.AddData(OwnedValue::Text("B"));
  module.OnRequest(removed);
  EXPECT_EQ(GetInt(removed, "ST", 99), 0U);
  EXPECT_EQ(LowBits(Data(removed)), 0U);
}

TEST_F(ModuleTest, RequestsSeeWholeScansOnly) {
  SetLevel("0");
  std::string components = "Components=A B C\n";
  for (const char* name : {"A", "B", "C"}) {
    components += std::string("[Component.") + name + "]\nDisplayName=" + name +
                  "\nNrInstancesRequest=<CMD Context=\"TRIQ\" OC=\"1\"/>\n"
                  "StatusRequest=<CMD Context=\"TRIQ\" OC=\"2\"/>\nStatus.1=OK 0\nStatus.2=Error 1\n";
  }
  Configure(components);
  // Within a scan every instance has the same raw value; the value changes from scan to scan.
  std::string script = "1: number 4\n";
  for (int scan = 1; scan <= 200; ++scan) {
    script += "2 @" + std::to_string(scan) + ": number " + std::to_string(scan % 2) + "\n";
  }
  ScriptedHost host(script);
  EM_Status module;
  std::atomic<bool> ended{false};
  std::atomic<int> answered{0};
  host.onRequest = [&](std::uint32_t operation, int scan) {
    if (operation == 0x1030 && scan == 200) {
      module.OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
      ended = true;
    }
  };
  ASSERT_TRUE(module.Start(&host, 0));
  module.StartThreads();
  std::vector<std::thread> clients;
  for (int i = 0; i < 4; ++i) {
    clients.emplace_back([&module, &ended, &answered] {
      OwnedCommand wake({.operation = 0x21DE});
      SetStatus(wake, 255);
      module.OnReply(wake);
      while (!ended) {
        OwnedCommand command({.operation = 0x2339});
        module.OnRequest(command);
        const std::string tree(TextOf(Data(command)));
        const bool good = tree.find("\"ObjStatus\":0") != std::string::npos;
        const bool failed = tree.find("\"ObjStatus\":1") != std::string::npos;
        EXPECT_FALSE(good && failed) << tree;
        answered += good || failed;
        OwnedCommand node({.operation = 0x2334});
        module.OnRequest(node);
      }
    });
  }
  for (std::thread& client : clients) client.join();
  module.Stop();
  EXPECT_GT(answered, 0);
}

// Holds nothing but what ThreadSanitizer and the end of the test tell: no race, no deadlock.
TEST_F(ModuleTest, HostThreadsMayDoEverythingAtOnce) {
  SetLevel("1");
  Configure(
      "Components=A\n[Component.A]\nDisplayName=A\nHandleCabinets=1\n"
      "StatusRequest=<CMD Context=\"TRIQ\" OC=\"1\"/>\nStatusConfirm=<CMD Context=\"TRIQ\" OC=\"2\"/>\n"
      "Status.1=OK 0\n");
  folder_.Write("EM_STATUS_simu.ini",
                "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=1\n[Components]\nA.MappedStatus=2\n");
  ScriptedHost host("1: number 0\n2: number 0\n1030: number 1\n1031: number 1\n1033: status 0\n");
  EM_Status module;
  ASSERT_TRUE(module.Start(&host, 0));
  module.StartThreads();
  constexpr int kRounds = 30;
  const std::function<void()> users[] = {
      [&] { EXPECT_TRUE(module.Start(&host, 0)); },
      [&] {
        module.SetCabNr(0);
        const std::uint32_t cabinet = 7;
        module.SetServerSeList(&cabinet, 1);
      },
      [&] { module.OnNotification(HWN_POWERSTATE_RESUME, 0, nullptr); },
      [&] {
        for (std::uint32_t operation = 0x2300; operation < 0x2340; ++operation) {
          OwnedCommand command({.operation = operation});
          module.OnRequest(command);
        }
      },
      [&] {
        OwnedCommand event({.operation = 0x21DE});
        SetStatus(event, 255);
        module.OnReply(event);
      },
  };
  std::vector<std::thread> threads;
  for (const auto& use : users) {
    threads.emplace_back([&use] {
      for (int round = 0; round < kRounds; ++round) use();
    });
  }
  for (std::thread& thread : threads) thread.join();
  module.OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
  EXPECT_TRUE(module.Stop());
}

}  // namespace
}  // namespace emstatus::test
