#include "host/machine/FrozenMachine.h"

#include <gtest/gtest.h>

#include "host/machine/ScenarioMachine.h"

namespace emstatus::host {
namespace {

constexpr std::chrono::milliseconds kNoWait{0};

/// Two groups, a named file system, a cabinet; not all of it good, and one answer of the wrong type.
constexpr const char* kObjects = R"({"format": 1, "name": "t", "extensionCabinets": [2], "objects": [
  {"class": "fan", "name": "a", "redundancy": {"group": "g", "members": 3, "needed": 2}},
  {"class": "fan", "name": "b", "redundancy": {"group": "g", "members": 3, "needed": 2},
   "condition": "critical", "reason": "stopped"},
  {"class": "fan", "name": "c", "redundancy": {"group": "other", "members": 1, "needed": 1}},
  {"class": "disk", "name": "d", "quality": "lost", "reason": "gone", "answers": [{"to": "state", "data": "x"}]},
  {"class": "disk", "name": "e", "cabinet": 2},
  {"class": "swap-use", "name": "swap", "unit": "%", "value": 95},
  {"class": "filesystem-health", "name": "/var"}]})";

class FrozenMachineTest : public testing::Test {
 protected:
  Answer Ask(std::uint32_t code, Question question, std::uint32_t index, std::uint32_t cabinet = 0,
             std::optional<nlohmann::json> data = std::nullopt) {
    return machine_.Ask({code, std::uint32_t(question), index, cabinet, std::move(data)}, kNoWait);
  }
  Answer State(std::uint32_t code, std::uint32_t index) { return Ask(code, Question::State, index); }

  FrozenMachine machine_{ScenarioMachine(ParseScenario(kObjects, "t"))};
};

TEST_F(FrozenMachineTest, EverythingIsThereAndGood) {
  EXPECT_EQ(machine_.ExtensionCabinets(), std::vector<std::uint32_t>{2});
  EXPECT_EQ(Ask(0x0102, Question::Count, 0), Answer::Of(3));
  for (const std::uint32_t index : {0U, 1U, 2U}) {
    EXPECT_EQ(State(0x0102, index), Answer::Of(0)) << index;
    EXPECT_EQ(Ask(0x0102, Question::Redundancy, index), Answer::Of(1)) << index;
  }
  EXPECT_EQ(State(0x0501, 1), Answer::Of(0));
  EXPECT_EQ(Ask(0x0501, Question::Reason, 1), Answer::Of(""));
  EXPECT_EQ(Ask(0x0501, Question::Name, 1, 2), Answer::Of("e"));
  EXPECT_EQ(Ask(0x0405, Question::State, 0).status, std::uint32_t(AnswerStatus::NotSupported));
  EXPECT_EQ(State(0x0102, 3).status, std::uint32_t(AnswerStatus::NotFound));
}

TEST_F(FrozenMachineTest, OneObjectFailsAndIsGoodAgain) {
  int changes = 0;
  machine_.Start([&] { ++changes; });
  const struct {
    Fault fault;
    std::uint32_t state;
    std::uint32_t redundancy;
  } rows[] = {
      {Fault::Warning, 1, 1},      {Fault::Failed, 2, 2}, {Fault::FailedTooMany, 2, 3},
      {Fault::BeyondLimit, 0, 1},  {Fault::Late, 10, 2},  {Fault::SensorFault, 11, 2},
      {Fault::Implausible, 12, 2}, {Fault::Lost, 14, 2},
  };
  for (const auto& row : rows) {
    machine_.Force({ObjectClass::Fan, 0, 0}, row.fault);
    EXPECT_EQ(State(0x0102, 0), Answer::Of(row.state)) << WordOf(row.fault);
    EXPECT_EQ(Ask(0x0102, Question::Redundancy, 0), Answer::Of(row.redundancy)) << WordOf(row.fault);
    EXPECT_EQ(Ask(0x0102, Question::Redundancy, 1), Answer::Of(row.redundancy)) << WordOf(row.fault);
    EXPECT_EQ(State(0x0102, 1), Answer::Of(0)) << "another member of the group";
    EXPECT_EQ(Ask(0x0102, Question::Redundancy, 2), Answer::Of(1)) << "another group";
  }
  machine_.Force({ObjectClass::Fan, 1, 0}, Fault::NoAnswer);
  EXPECT_EQ(State(0x0102, 1).status, std::uint32_t(AnswerStatus::Failed));
  EXPECT_EQ(State(0x0102, 0), Answer::Of(0)) << "one fault at a time";
  machine_.Restore();
  EXPECT_EQ(State(0x0102, 1), Answer::Of(0));
  EXPECT_EQ(changes, int(std::size(rows)) + 2);
}

TEST_F(FrozenMachineTest, LimitsOfTheConfigurationAreBrokenByTheirFaultOnly) {
  const auto above = [&] { return Ask(0x0403, Question::StateAbove, 0, 0, 90); };
  EXPECT_EQ(above(), Answer::Of(0)) << "whatever was read when it was taken";
  machine_.Force({ObjectClass::SwapUse, 0, 0}, Fault::Failed);
  EXPECT_EQ(above(), Answer::Of(0));
  machine_.Force({ObjectClass::SwapUse, 0, 0}, Fault::BeyondLimit);
  EXPECT_EQ(above(), Answer::Of(1));
  EXPECT_EQ(Ask(0x0403, Question::StateAbove, 0).status, std::uint32_t(AnswerStatus::NotSupported));
  machine_.Force({ObjectClass::SwapUse, 0, 0}, Fault::Lost);
  EXPECT_EQ(above(), Answer::Of(14));
}

TEST_F(FrozenMachineTest, WhatWasAskedIsKnownByTheObjectsOwnNumber) {
  State(0x0102, 0);
  machine_.ForgetAsked();
  EXPECT_EQ(Ask(0x0603, Question::State, 0xFF00, 0, "/var"), Answer::Of(0));
  State(0x0102, 7);
  Ask(0x0102, Question::Count, 0);
  EXPECT_EQ(machine_.WasAsked(),
            (std::set<FrozenMachine::Asked>{{{ObjectClass::FilesystemHealth, 0, 0}, Question::State}}));
  machine_.Force({ObjectClass::FilesystemHealth, 0, 0}, Fault::Failed);
  EXPECT_EQ(Ask(0x0603, Question::State, 0xFF00, 0, "/var"), Answer::Of(2)) << "also under its name";
}

TEST_F(FrozenMachineTest, FaultsAreThoseThatTheQuestionShows) {
  const auto count = [&](ObjectClass objectClass, Question question) {
    return FaultsOf(machine_.Find({objectClass, RowOf(objectClass).firstIndex, 0})->reading, question).size();
  };
  EXPECT_EQ(count(ObjectClass::Fan, Question::State), 8U) << "with too few left";
  EXPECT_EQ(count(ObjectClass::Disk, Question::State), 7U);
  EXPECT_EQ(count(ObjectClass::Disk, Question::Quality), 5U);
  EXPECT_EQ(count(ObjectClass::SwapUse, Question::StateAbove), 6U);
  EXPECT_EQ(count(ObjectClass::Fan, Question::Redundancy), 3U);
}

}  // namespace
}  // namespace emstatus::host
