#include <gtest/gtest.h>

#include <future>

#include "host/machine/ScenarioMachine.h"

namespace emstatus::host {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kScenarioPatience{5000};

std::string Document(const std::string& objects, const std::string& more = "") {
  return R"({"format": 1, "name": "test", )" + more + R"("objects": [)" + objects + "]}";
}

ScenarioMachine MachineOf(const std::string& objects, const std::string& more = "") {
  return ScenarioMachine(ParseScenario(Document(objects, more), "test"));
}

Answer Ask(ScenarioMachine& machine, std::uint32_t code, Question question, std::uint32_t object = 0,
           milliseconds timeout = kScenarioPatience, std::uint32_t cabinet = 0) {
  return machine.Ask({code, std::uint32_t(question), object, cabinet, std::nullopt}, timeout);
}

TEST(ScenarioFile, TellsWhatIsWrongAndWhere) {
  const std::string fan = R"({"class": "fan", "name": "a")";
  const struct {
    std::string text;
    const char* message;
  } rows[] = {
      {"{\n  \"format\": 1,\n  oops\n}", "s.json: line 3, column 3: expected JSON"},
      {"[]", "s.json: /: expected an object, found []"},
      {R"({"format": 2, "name": "x", "objects": []})",
       "/format: expected a whole number from 1 to 1, found 2"},
      {R"({"format": 1, "objects": []})", "/: expected a member \"name\""},
      {R"({"format": 1, "name": "x", "objcts": []})",
       "/objcts: expected no member of this name (known: format"},
      {R"({"format": 1, "name": "x", "objects": 3})", "/objects: expected an array, found 3"},
      {Document("{}", R"("time": "hours", )"), "/time: expected \"scans\" or \"seconds\", found \"hours\""},
      {Document(R"({"class": "fans", "name": "a"})"), "/objects/0/class: expected the word of a class"},
      {Document(fan + R"(, "value": "9"})"), "/objects/0/value: expected a number, found \"9\""},
      {Document(fan + R"(, "value": 9, "unit": "rpm"})"), "/objects/0/unit: expected a unit"},
      {Document(fan + R"(, "limits": {"a/b": 1}, "value": 1})"),
       "/objects/0/limits/a~1b: expected no member"},
      {Document(fan + R"(, "condition": "bad"})"),
       "/objects/0/condition: expected good, warning or critical"},
      {Document(fan + R"(, "condition": "warning"})"), "/objects/0: expected a \"reason\""},
      {Document(fan + R"(, "quality": "lost"})"), "/objects/0: expected a \"reason\""},
      {Document(fan + R"(, "story": []})"), "/objects/0/story: expected at least one step"},
      {Document(fan + R"(, "story": [{"at": 2}]})"), "/objects/0/story/0/at: expected 1 in the first step"},
      {Document(fan + R"(, "story": [{"at": 1}, {"at": 1}]})"),
       "/objects/0/story/1/at: expected a later moment"},
      {Document(fan + R"(, "value": 1, "story": [{"at": 1}]})"), "/objects/0/value: expected no member"},
      {Document(fan + R"(, "answers": [{"to": "weight"}]})"),
       "/objects/0/answers/0/to: expected the word of"},
      {Document(fan + R"(, "answers": [{"delaySeconds": -1}]})"),
       "/delaySeconds: expected a number of seconds"},
      {Document(fan + R"(, "redundancy": {"group": "g", "members": 2, "needed": 3}})"),
       "/objects/0/redundancy/needed: expected a whole number from 0 to 2, found 3"},
      {Document(fan + "}, " + fan + "}"), "/objects/1: expected an id (or name) that no other object"},
      {Document(fan + R"(, "cabinet": 70000})"),
       "/objects/0/cabinet: expected a whole number from 0 to 65535"},
  };
  for (const auto& row : rows) {
    try {
      ParseScenario(row.text, "s.json");
      ADD_FAILURE() << "accepted: " << row.text;
    } catch (const ScenarioError& error) {
      EXPECT_NE(std::string(error.what()).find(row.message), std::string::npos)
          << error.what() << "\nwanted: " << row.message;
    }
  }
  EXPECT_THROW(ReadScenario("/no/such/file.json"), ScenarioError);
}

TEST(ScenarioFile, TheShippedExampleIsRight) {
  const Scenario scenario = ReadScenario(EM_SOURCE_DIR "/examples/server.json");
  EXPECT_EQ(scenario.extensionCabinets, (std::vector<std::uint32_t>{1, 2}));
  EXPECT_GT(scenario.objects.size(), 80U);
}

TEST(ScenarioMachine, StoryGoesOnWithTheScans) {
  auto machine = MachineOf(R"({"class": "fan", "name": "a", "unit": "RPM", "limits": {"lowerCritical": 600},
    "story": [{"at": 1, "value": 900}, {"at": 3, "value": 0}, {"at": 4, "quality": "lost", "reason": "gone"}]})",
                           R"("repeatAfter": 4, )");
  for (const std::uint32_t state : {0U, 0U, 2U, 14U, 0U, 0U, 2U}) {
    machine.OnScanBegin();
    EXPECT_EQ(Ask(machine, 0x0102, Question::State), Answer::Of(state));
  }
  machine.OnScanBegin();
  EXPECT_EQ(Ask(machine, 0x0102, Question::Reason), Answer::Of("gone"));
}

TEST(ScenarioMachine, StoryGoesOnWithTheClock) {
  ScenarioMachine::Clock::time_point now{};
  ScenarioMachine machine(ParseScenario(Document(R"({"class": "fan", "name": "a",
        "story": [{"at": 0}, {"at": 2.5, "condition": "critical", "reason": "stopped"}]})",
                                                 R"("time": "seconds", "repeatAfter": 5, )"),
                                        "test"),
                          [&] { return now; });
  const struct {
    int milliseconds;
    std::uint32_t state;
  } rows[] = {{0, 0}, {2499, 0}, {2500, 2}, {4999, 2}, {5000, 0}, {7500, 2}};
  for (const auto& row : rows) {
    now = ScenarioMachine::Clock::time_point(milliseconds(row.milliseconds));
    EXPECT_EQ(Ask(machine, 0x0102, Question::State), Answer::Of(row.state)) << row.milliseconds;
  }
}

TEST(ScenarioMachine, ObjectsAreNumberedByClassAndCabinet) {
  auto machine = MachineOf(R"({"class": "disk", "name": "d1"}, {"class": "fan", "name": "f"},
    {"class": "disk", "name": "d2"}, {"class": "disk", "name": "e1", "cabinet": 3})",
                           R"("extensionCabinets": [3], )");
  EXPECT_EQ(Ask(machine, 0x0501, Question::Count), Answer::Of(2));
  EXPECT_EQ(Ask(machine, 0x0501, Question::Count, 0, kScenarioPatience, 3), Answer::Of(1));
  EXPECT_EQ(Ask(machine, 0x0501, Question::Count, 0, kScenarioPatience, 4), Answer::Of(0));
  EXPECT_EQ(Ask(machine, 0x0501, Question::Name, 2), Answer::Of("d2")) << "disks count from 1";
  EXPECT_EQ(Ask(machine, 0x0501, Question::Name, 1, kScenarioPatience, 3), Answer::Of("e1"));
  EXPECT_EQ(Ask(machine, 0x0501, Question::ClassName), Answer::Of("Disks"));
  EXPECT_EQ(Ask(machine, 0x0501, Question::State, 0).status, 2U);
  EXPECT_EQ(Ask(machine, 0x0501, Question::State, 3).status, 2U);
  EXPECT_EQ(Ask(machine, 0x0999, Question::State).status, 1U);
  EXPECT_EQ(machine.Ask({0x0501, 0x0077, 1, 0, std::nullopt}, kScenarioPatience).status, 1U);
}

TEST(ScenarioMachine, ANamedObjectIsFoundByItsNumberLater) {
  auto machine = MachineOf(R"({"class": "filesystem-space", "name": "/"},
    {"class": "filesystem-space", "name": "/var", "condition": "warning", "reason": "full"})");
  const ObjectAddress address{ObjectClass::FilesystemSpace, 0xFF01, 0};
  EXPECT_FALSE(machine.Find(address));
  const Request request{0x0601, 2, 0xFF01, 0, nlohmann::json("/var")};
  EXPECT_EQ(machine.Ask(request, kScenarioPatience), Answer::Of(1));
  ASSERT_TRUE(machine.Find(address));
  EXPECT_EQ(machine.Find(address)->reading.name, "/var");
  EXPECT_EQ(machine.Ask({0x0601, 2, 0xFF01, 0, nlohmann::json("/usr")}, kScenarioPatience).status, 2U);
}

TEST(ScenarioMachine, GroupCountsTheMembersThatWork) {
  auto machine =
      MachineOf(R"({"class": "fan", "name": "a", "redundancy": {"group": "g", "members": 3, "needed": 2}},
    {"class": "fan", "name": "b", "redundancy": {"group": "g", "members": 3, "needed": 2},
     "condition": "critical", "reason": "stopped"},
    {"class": "fan", "name": "c", "redundancy": {"group": "g", "members": 3, "needed": 2},
     "story": [{"at": 1, "condition": "warning", "reason": "slow"}, {"at": 2, "quality": "late", "reason": "?"}]})");
  machine.OnScanBegin();
  EXPECT_EQ(Ask(machine, 0x0102, Question::Redundancy), Answer::Of(std::uint32_t(RedundancyState::Reduced)));
  machine.OnScanBegin();
  EXPECT_EQ(Ask(machine, 0x0102, Question::Redundancy),
            Answer::Of(std::uint32_t(RedundancyState::Insufficient)));
}

TEST(ScenarioMachine, LatchedStateStaysUntilItIsConfirmed) {
  auto machine = MachineOf(R"({"class": "intrusion", "name": "lid",
    "story": [{"at": 1}, {"at": 2, "condition": "critical", "reason": "open", "latched": true}, {"at": 3}]})");
  const auto state = [&] { return *Ask(machine, 0x0107, Question::State).data; };
  machine.OnScanBegin();
  EXPECT_EQ(state(), 0);
  machine.OnScanBegin();
  EXPECT_EQ(state(), 2);
  EXPECT_EQ(Ask(machine, 0x0107, Question::Confirm).status, 6U) << "it is still open";
  machine.OnScanBegin();
  EXPECT_EQ(state(), 2);
  EXPECT_EQ(Ask(machine, 0x0107, Question::Confirm), Answer::Of(1));
  EXPECT_EQ(state(), 0);
  EXPECT_EQ(Ask(machine, 0x0107, Question::Confirm).status, 6U) << "nothing left to clear";
  EXPECT_EQ(Ask(machine, 0x0102, Question::Confirm).status, 2U);
}

TEST(ScenarioMachine, AnswersFailOrAreOfTheWrongType) {
  auto machine = MachineOf(R"({"class": "fan", "name": "a", "answers": [{"to": "state", "data": "hot"}]},
    {"class": "fan", "name": "b", "answers": [{"status": 6}]},
    {"class": "fan", "name": "c", "answers": [{"to": "state", "data": {"RAW": [1, 0]}}, {"to": "name", "data": null}]},
    {"class": "voltage", "name": "v", "answers": [{"to": "count", "status": 9, "data": 1.5}]})");
  EXPECT_EQ(Ask(machine, 0x0102, Question::State, 0), Answer::Of("hot"));
  EXPECT_EQ(Ask(machine, 0x0102, Question::Name, 0), Answer::Of("a"));
  EXPECT_EQ(Ask(machine, 0x0102, Question::Name, 1), Answer::Refusal(AnswerStatus::Failed));
  EXPECT_EQ(Ask(machine, 0x0102, Question::Count), Answer::Of(3))
      << "every question means those about an object";
  EXPECT_EQ(Ask(machine, 0x0102, Question::State, 2), Answer::Of(nlohmann::json{{"RAW", {1, 0}}}));
  EXPECT_EQ(Ask(machine, 0x0102, Question::Name, 2), Answer::Of(nullptr));
  EXPECT_EQ(Ask(machine, 0x0103, Question::Count), (Answer{9, nlohmann::json(1.5)}));
}

TEST(ScenarioMachine, ASlowAnswerFailsAndDelaysNobodyElse) {
  auto machine =
      MachineOf(R"({"class": "fan", "name": "a", "answers": [{"to": "state", "delaySeconds": 600}]},
    {"class": "fan", "name": "b", "source": "bmc", "answers": [{"to": "state", "delaySeconds": 600}]},
    {"class": "fan", "name": "c", "source": "bmc"}, {"class": "fan", "name": "d"})");
  EXPECT_EQ(Ask(machine, 0x0102, Question::State, 0, milliseconds(20)).status, 6U);
  EXPECT_EQ(Ask(machine, 0x0102, Question::State, 0, milliseconds(600000)).status, 6U)
      << "an overdue source fails at once instead of delaying every question";
  EXPECT_EQ(Ask(machine, 0x0102, Question::Name, 0), Answer::Of("a"));
  EXPECT_EQ(Ask(machine, 0x0102, Question::State, 3), Answer::Of(0));
  EXPECT_EQ(Ask(machine, 0x0102, Question::State, 1, milliseconds(20)).status, 6U);
  EXPECT_EQ(Ask(machine, 0x0102, Question::State, 2).status, 6U) << "c shares the source of b";
}

TEST(ScenarioMachine, StopReleasesThoseWhoWait) {
  auto machine =
      MachineOf(R"({"class": "fan", "name": "a", "answers": [{"to": "state", "delaySeconds": 600}]})");
  auto waiting = std::async(std::launch::async, [&] {
    return Ask(machine, 0x0102, Question::State, 0, milliseconds(600000)).status;
  });
  machine.Stop();
  EXPECT_EQ(waiting.get(), 6U);
}

}  // namespace
}  // namespace emstatus::host
