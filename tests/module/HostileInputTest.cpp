// Documents that no host should send, and answers that no host should give.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <filesystem>
#include <functional>
#include <limits>
#include <optional>

#include "data/Command.h"
#include "data/JsonWriter.h"
#include "module/EM_Status.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TraceCapture.h"
#include "tests/support/TraceLevel.h"
#include "tests/support/ValueBuilder.h"

namespace emstatus::test {
namespace {

using Maker = std::function<OwnedValue()>;

/// Answered by a status alone.
constexpr std::uint32_t kConfirm = 0x230A;

/// Answers request 1 with what is arranged and every other with 1; shuts the module down after one scan.
class OneScanHost final : public HostInterface {
 public:
  std::function<void(HostCommand&)> answerCount = [](HostCommand& command) { SetDataWord(command, 2); };
  std::int64_t signals = 0;
  int statusRequests = 0;
  int signalRequests = 0;

  void SendCommand(CIExtensionModule*, HostCommand&, std::uint32_t) override {}
  bool SendRequest(CIExtensionModule* module, HostCommand& command, std::uint32_t) override {
    const std::uint32_t operation = GetInt(command, "OC", 0);
    if (operation == 0x1030 && scans_++ == 1) {
      module->OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
      ended_ = true;
      ended_.notify_all();
    }
    statusRequests += operation == 2;
    signalRequests += operation == 0x1031;
    if (operation == 1) {
      answerCount(command);
    } else {
      SetData(command, Number(operation == 0x1030 ? signals : 1));
    }
    return true;
  }
  void SendEvent(CIExtensionModule*, HostCommand&) override {}
  bool SetModuleState(CIExtensionModule*, bool) override { return true; }
  bool ModuleStopping(CIExtensionModule*) override { return true; }
  bool SendToModule(CIExtensionModule*, HostCommand&, std::uint32_t, std::uint32_t) override { return true; }
  std::uint32_t HostKind(CIExtensionModule*) override { return 0; }

  void WaitForEnd() const { ended_.wait(false); }

 private:
  int scans_ = 0;
  std::atomic<bool> ended_{false};
};

class HostileInputTest : public testing::Test {
 protected:
  HostileInputTest() {
    folder_.Write(
        "EM_STATUS.ini",
        "[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=4\n[Configuration]\n"
        "InitialPollingDelaySeconds=0\nPollingRateSeconds=0\nAdvancedPollingRateSeconds=0\n"
        "[StatusMapping]\nOK=1\n[System]\nSubsystems=S\n[Subsystem.S]\nDisplayName=s\nComponents=A\n"
        "[Component.A]\nDisplayName=a\nNrInstancesRequest=<CMD Context=\"TRIQ\" OC=\"1\"/>\n"
        "StatusRequest=<CMD Context=\"TRIQ\" OC=\"2\"/>\n"
        "StatusConfirm=<CMD Context=\"TRIQ\" OC=\"1\"/>\nStatus.1=OK 1\n");
    std::filesystem::current_path(folder_.Path());
  }
  ~HostileInputTest() override {
    std::filesystem::current_path("/");
    Trace().Take();
  }

  /// One whole scan.
  static void Run(EM_Status& module, OneScanHost& host) {
    ASSERT_TRUE(module.Start(&host, 0));
    module.StartThreads();
    // A module that is stopped between two scans pauses before the next.
    host.WaitForEnd();
    module.Stop();
  }

  /// "ST", and "DA" where that is part of the answer.
  static std::string Answer(EM_Status& module, std::uint32_t operation, std::optional<OwnedValue> data = {}) {
    OwnedCommand command({.operation = operation});
    if (data) command.AddData(*std::move(data));
    const bool handled = module.OnRequest(command);
    const std::uint32_t status = GetInt(command, "ST", kStatusAbsent);
    const bool hasData = status == 0 && operation != kConfirm;
    return (handled ? "" : "unknown ") + std::to_string(status) + (hasData ? JsonText(Data(command)) : "");
  }

  void Configure(const std::string& text) const { folder_.Write("EM_STATUS.ini", text); }

 private:
  TemporaryDirectory folder_;
};

OwnedValue WithCommands(OwnedValue commands) {
  return Object("SIP", Object("CMD", std::move(commands)));
}

/// Tells of contents but has none.
OwnedValue WithoutStorage(std::uint32_t tag) {
  CommandValue value{};
  value.array = {nullptr, 7, 9};
  value.tag = tag;
  return OwnedValue::Adopt(value);
}

OwnedValue Nested(int levels, OwnedValue inner) {
  for (; levels > 0; --levels) {
    inner = levels % 2 == 0 ? Array(std::move(inner)) : Object("DA", std::move(inner));
  }
  return inner;
}

TEST_F(HostileInputTest, MisshapenDocumentsGetWhatTheyHaveRoomFor) {
  const TraceLevel level(5);
  OneScanHost host;
  EM_Status module;
  Run(module, host);
  const std::string kUnchanged;
  struct {
    OwnedValue document;
    std::uint32_t current;
    bool handled;
    std::string after;
  } rows[] = {
      {OwnedValue(), 0, false, kUnchanged},
      {Number(1), 1, false, kUnchanged},
      {Object(), 0, false, kUnchanged},
      {Array(Object("SIP", Object())), 0, false, kUnchanged},
      {Object("SIP", Text("CMD")), 0, false, kUnchanged},
      {Object("SIP", Object()), 0, false, kUnchanged},
      {WithCommands(Object()), 0, false, kUnchanged},
      {WithCommands(Text("x")), 0, false, kUnchanged},
      {WithCommands(Array(OwnedValue())), 0, false, kUnchanged},
      {WithCommands(Array(Object(), Array())), 1, false, kUnchanged},
      {WithCommands(Array(Object("OC", Number(0x2300)))), 0xFFFFFFFF, false, kUnchanged},
      {WithCommands(Array()), 0, false, R"([{"ST":1}])"},
      {WithCommands(WithoutStorage(tag::kArray)), 1, false, R"([{},{"ST":1}])"},
      {WithCommands(Array(WithoutStorage(tag::kObject))), 0, false, R"([{"ST":1}])"},
      {WithCommands(Array(Object("OC", Number(0x2300)))), 2, false, R"([{"OC":8960},{},{"ST":1}])"},
      {WithCommands(Array(Object("OC", Array()))), 0, false, R"([{"OC":[],"ST":1}])"},
      {WithCommands(Array(Object("OC", WithoutStorage(tag::kConstantString)))), 0, false,
       R"([{"OC":"","ST":1}])"},
      {WithCommands(Array(Object("OC", Text("0x2300\0")))), 0, true,
       R"([{"OC":"0x2300\u0000","ST":0,"DA":1}])"},
      {WithCommands(Array(Object("OC", Text("021400"), "OC", Number(1)))), 0, true,
       R"([{"OC":"021400","OC":1,"ST":0,"DA":1}])"},
      {WithCommands(Array(Object("OC", Number(0x2301), "OE", Object()))), 0, true,
       R"([{"OC":8961,"OE":{},"ST":0,"DA":1}])"},
      {WithCommands(Array(Object("OC", Number(0x2302), "OE", Number(-1), "ST", Array()))), 0, true,
       R"([{"OC":8962,"OE":-1,"ST":19}])"},
  };
  for (auto& row : rows) {
    const std::string before = JsonText(row.document);
    OwnedCommand command = CommandOf(std::move(row.document), row.current);
    module.OnReply(command);
    EXPECT_EQ(JsonText(command.document), before);
    EXPECT_EQ(module.OnRequest(command), row.handled) << before;
    const std::string expected = row.after.empty() ? before : R"({"SIP":{"CMD":)" + row.after + "}}";
    EXPECT_EQ(JsonText(command.document), expected) << before;
  }
}

TEST_F(HostileInputTest, AnIndexFarBeyondTheArrayIsRefused) {
  const TraceLevel level(5);
  EM_Status module;
  for (const std::uint32_t index : {65537U, 0xFFFFFFFFU}) {
    OwnedCommand command({.operation = 0x2300});
    command.current = index;
    Trace().Take();
    EXPECT_FALSE(module.OnRequest(command));
    const CommandValue& commands = MemberOrEmpty(MemberOrEmpty(command.document, "SIP"), "CMD");
    EXPECT_EQ(commands.array.count, 1U);
    EXPECT_EQ(commands.array.capacity, 16U);
    EXPECT_TRUE(Holds(Trace().Take(), "\nEM_STATUS (REQUEST) : ## ERROR! Command index " +
                                          std::to_string(index) +
                                          " is far beyond the 1 commands - refused!"));
  }
  OwnedCommand command;
  command.current = 65536;
  EXPECT_FALSE(module.OnRequest(command));
  EXPECT_EQ(GetInt(command, "ST", 99), 1U) << "as many new elements as may be";
}

TEST_F(HostileInputTest, EveryKindOfDataForEveryOperation) {
  const TraceLevel level(2);
  OneScanHost host;
  EM_Status module;
  Run(module, host);
  const std::string kLong(1 << 20, 'x');
  // Answers of a node's status, of the mapping by name and of the mapping by position.
  const struct {
    const char* what;
    Maker data;
    const char* node;
    const char* byName;
    const char* byPosition;
  } rows[] = {
      {"null", [] { return OwnedValue(); }, "01", "2", "2"},
      {"boolean", [] { return OwnedValue::Boolean(true); }, "01", "2", "2"},
      {"structure", [] { return Object("a", Number(1)); }, "01", "2", "2"},
      {"no bytes", [] { return Object("RAW", Array()); }, "01", "2", "2"},
      {"bytes that are a text", [] { return Object("RAW", Text("12345")); }, "01", "2", "2"},
      {"bytes of no number", [] { return Object("RAW", Array(OwnedValue::Double(1.5))); }, "01", "2", "2"},
      {"four bytes",
       [] {
         return OwnedValue::Raw(std::vector<std::uint8_t>{1, 0, 0, 0});
       },
       "01", "2", R"(0{"RAW":[1,0,0,0,1,0,0,0]})"},
      {"a name",
       [] {
         return OwnedValue::Raw(std::vector<std::uint8_t>{1, 2, 3, 4, 'A'});
       },
       "01", R"(0{"RAW":[1,0,0,0,1,0,0,0,65,0]})", R"(0{"RAW":[1,0,0,0,1,0,0,0]})"},
      {"a name that goes on", [] { return Array(Text("\1...AB")); }, "01", "2",
       R"(0{"RAW":[1,0,0,0,1,0,0,0]})"},
      {"texts", [] { return Array(Text("\2...A\0x"), Number(1)); }, "01",
       R"(0{"RAW":[2,0,0,0,0,0,0,0,65,0]})", R"(0{"RAW":[2,0,0,0,0,0,0,0]})"},
      {"numbers", [] { return Array(Number(1)); }, "01", "2", "2"},
      {"no elements", [] { return Array(); }, "01", "2", "2"},
      {"no text", [] { return Text(""); }, "01", "2", R"(0{"RAW":[0,0,0,0,0,0,0,0]})"},
      {"a node", [] { return Text("S"); }, "01", "2", R"(0{"RAW":[83,0,0,0,0,0,0,0]})"},
      {"a node and a zero byte", [] { return Text("S\0x"); }, "01", "2", R"(0{"RAW":[83,0,0,0,0,0,0,0]})"},
      {"a megabyte", [&] { return OwnedValue::Text(kLong); }, "2", "2", R"(0{"RAW":[120,0,0,0,0,0,0,0]})"},
      {"a number", [] { return Number(300); }, "01", "2", R"(0{"RAW":[44,0,0,0,0,0,0,0]})"},
      {"a large number", [] { return Number(0x4100000001); }, "01", R"(0{"RAW":[1,0,0,0,1,0,0,0,65,0]})",
       R"(0{"RAW":[1,0,0,0,1,0,0,0]})"},
      {"a negative number", [] { return Number(-1); }, "01", "2", "2"},
      {"a fraction", [] { return OwnedValue::Double(0.5); }, "01", "2", "2"},
      {"a kind above 6", [] { return Tagged(0x2807, 1); }, "01", "2", "2"},
      {"the highest kind", [] { return Tagged(0xFFFFFFFF, ~UINT64_C(0)); }, "01", "2", "2"},
      {"an array without storage", [] { return WithoutStorage(tag::kArray); }, "01", "2", "2"},
      {"an object without storage", [] { return WithoutStorage(tag::kObject); }, "01", "2", "2"},
      {"10,000 levels", [] { return Nested(10000, Text("x")); }, "01", "2", "2"},
  };
  for (std::uint32_t operation = 0x2300; operation <= 0x233F; ++operation) {
    const std::string without = Answer(module, operation);
    const bool isNode = operation >= 0x2330 && operation <= 0x2338;
    for (const auto& row : rows) {
      const std::string answer = Answer(module, operation, row.data());
      const bool isMapping = operation == 0x230B || operation == 0x2314;
      const bool isRefused = isNode && std::string_view(row.node) == "2";
      const bool isOther = isNode && std::string_view(row.what).starts_with("a node");
      if (operation == 0x2333) {
        EXPECT_EQ(answer, row.node) << row.what;
      }
      if (operation == 0x230B) {
        EXPECT_EQ(answer, row.byName) << row.what;
      }
      if (operation == 0x2314) {
        EXPECT_EQ(answer, row.byPosition) << row.what;
      }
      if (!isMapping && !isOther) {
        EXPECT_EQ(answer, isRefused ? "2" : without) << std::hex << operation << " " << row.what;
      }
    }
  }
}

TEST_F(HostileInputTest, LongAndDeepDocumentsAreReadToTheirEnd) {
  const TraceLevel level(5);
  EM_Status module;
  const std::string kLong = "0x" + std::string(1 << 20, '0') + "2300";
  OwnedCommand longNumber = CommandWith("OC", OwnedValue::Text(kLong));
  EXPECT_TRUE(module.OnRequest(longNumber));
  OwnedCommand longName = CommandWith("OC", Number(0x1801));
  AddMember(*EnsureCurrentCommand(longName), OwnedValue::Text(kLong), Nested(10000, OwnedValue()));
  SetStatus(longName, 255);
  module.OnReply(longName);
  EXPECT_FALSE(module.OnRequest(longName));
  OwnedCommand deep = CommandOf(Nested(10000, OwnedValue()));
  EXPECT_FALSE(module.OnRequest(deep));
  module.OnReply(deep);
}

TEST_F(HostileInputTest, NumbersCountByTheirLowBitsWhateverTheirTag) {
  EM_Status module;
  constexpr std::uint32_t kBits[] = {0x200, 0x400, 0x800, 0x1000, 0x2000, 0x100000, 0x200000, 0x80000000};
  for (std::uint32_t chosen = 0; chosen < (1U << std::size(kBits)); ++chosen) {
    std::uint32_t tag = 6;
    for (std::size_t bit = 0; bit < std::size(kBits); ++bit) {
      if ((chosen & (1U << bit)) != 0) tag |= kBits[bit];
    }
    OwnedCommand command = CommandWith("OC", Tagged(tag, 0xABCDEF0100002300));
    EXPECT_TRUE(module.OnRequest(command)) << std::hex << tag;
    EXPECT_EQ(JsonText(Data(command)), "0") << std::hex << tag;
  }
}

TEST_F(HostileInputTest, TheHostsCountOfSignalsIsBounded) {
  // Of two scans.
  const struct {
    std::int64_t signals;
    int requests;
  } rows[] = {{-1, 0}, {256, 512}, {257, 0}, {0x7FFFFFFF, 0}, {0x80000000, 0}};
  for (const auto& row : rows) {
    OneScanHost host;
    host.signals = row.signals;
    EM_Status module;
    Run(module, host);
    EXPECT_EQ(host.signalRequests, row.requests) << row.signals;
  }
}

TEST_F(HostileInputTest, ListsOfComponentsAreBounded) {
  const auto list = [](const char* name, int count) {
    std::string names;
    for (; count > 0; --count) names += name;
    return names;
  };
  Configure("[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=4\n[System]\nSubsystems=" + list("S ", 129) +
            "\n[Subsystem.S]\nDisplayName=s\nComponents=" + list("A ", 128) + "\n");
  const TraceLevel level(1);
  OneScanHost host;
  EM_Status module;
  ASSERT_TRUE(module.Start(&host, 0));
  const auto lines = Trace().Take();
  // The last subsystem is one too many.
  EXPECT_EQ(std::ranges::count(lines,
                               "\nEM_STATUS (ReadCfg) : ## ERROR! More than 16384 components listed - "
                               "\"A\" ignored!"),
            1);
}

TEST_F(HostileInputTest, TheHostsCountOfInstancesIsBounded) {
  const auto data = [](Maker maker) { return [maker](HostCommand& command) { SetData(command, maker()); }; };
  const auto number = [data](std::int64_t value) { return data([value] { return Number(value); }); };
  const auto bits = [data](std::uint64_t value) { return data([value] { return Tagged(0x206, value); }); };
  const struct {
    const char* what;
    std::function<void(HostCommand&)> answer;
    int instances;
    // The same answer to a confirm command, which takes any number or text.
    const char* confirm = "0";
  } rows[] = {
      {"two", number(2), 2},
      {"none", number(0), 0},
      {"minus one", number(-1), 0},
      {"the least", number(std::numeric_limits<std::int32_t>::min()), 0},
      {"one too many", number(65537), 0},
      {"the most", number(std::numeric_limits<std::int32_t>::max()), 0},
      {"64 bits", number(0x100000003), 3},
      {"not a number", bits(std::bit_cast<std::uint64_t>(std::numeric_limits<double>::quiet_NaN())), 0},
      {"infinite", bits(std::bit_cast<std::uint64_t>(std::numeric_limits<double>::infinity())), 0},
      {"a fraction", bits(0x4008000080000001), 0},
      {"a byte", data([] { return OwnedValue::Raw(std::vector<std::uint8_t>{3}); }), 3},
      {"no bytes", data([] { return OwnedValue::Raw({}); }), 0},
      {"five bytes", data([] {
         return OwnedValue::Raw(std::vector<std::uint8_t>{1, 0, 0, 0, 1});
       }),
       1},
      {"a text", data([] { return Text("2"); }), 0},
      {"true", data([] { return OwnedValue::Boolean(true); }), 0, "6"},
      {"an array", data([] { return Array(Number(2)); }), 0, "6"},
      {"a structure", data([] { return Nested(10000, Number(2)); }), 0, "6"},
      {"a kind above 6", data([] { return Tagged(7, 2); }), 0, "6"},
      {"a status that is a text",
       [](HostCommand& command) {
         SetDataWord(command, 2);
         SetMember(*EnsureCurrentCommand(command), "ST", Text("0xC"));
       },
       2},
      {"no document", [](HostCommand& command) { Assign(command.document, OwnedValue()); }, 0, "6"},
      {"another index",
       [](HostCommand& command) {
         SetDataWord(command, 2);
         command.current = 0xFFFFFFFF;
       },
       0, "6"},
  };
  for (const auto& row : rows) {
    OneScanHost host;
    host.answerCount = row.answer;
    EM_Status module;
    Run(module, host);
    EXPECT_EQ(host.statusRequests, row.instances) << row.what;
    EXPECT_EQ(Answer(module, 0x2320), "0" + std::to_string(row.instances)) << row.what;
    EXPECT_EQ(Answer(module, kConfirm), row.confirm) << row.what;
  }
}

}  // namespace
}  // namespace emstatus::test
