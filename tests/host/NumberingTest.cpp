#include <gtest/gtest.h>

#include <set>

#include "host/machine/ReadingAnswer.h"
#include "host/machine/ReadingText.h"
#include "host/view/AssociationKey.h"

namespace emstatus::host {
namespace {

ObjectView Object(Quality quality, Condition condition, std::optional<double> value = std::nullopt) {
  ObjectView view;
  view.reading.objectClass = ObjectClass::Fan;
  view.reading.name = "Fan 1";
  view.reading.quality = quality;
  view.reading.condition = condition;
  if (value) {
    view.reading.measurement = Measurement{*value, Unit::RevolutionsPerMinute, {}};
  }
  view.age = std::chrono::milliseconds(4900);
  return view;
}

TEST(Numbering, WordsAreUniqueAndLeadBack) {
  std::set<std::string_view> words;
  for (const ClassRow& row : Classes()) {
    EXPECT_TRUE(words.insert(row.word).second) << row.word;
    EXPECT_EQ(FindClass(row.word), &row);
    EXPECT_EQ(FindClass(std::uint32_t(row.objectClass)), &row);
  }
  for (std::uint32_t number = 1; number <= 15; ++number) {
    const auto question = FindQuestion(number);
    ASSERT_TRUE(question) << number;
    EXPECT_EQ(FindQuestion(WordOf(*question)), question);
  }
  EXPECT_FALSE(FindQuestion(0U));
  EXPECT_FALSE(FindQuestion(16U));
  EXPECT_EQ(FindClass(0x1030U), nullptr);
}

TEST(Numbering, RawStateTellsTheConditionOnlyWhenItIsKnown) {
  const struct {
    Quality quality;
    Condition condition;
    std::uint32_t state;
  } rows[] = {
      {Quality::Good, Condition::Good, 0},         {Quality::Good, Condition::Warning, 1},
      {Quality::Good, Condition::Critical, 2},     {Quality::Late, Condition::Good, 10},
      {Quality::SensorFault, Condition::Good, 11}, {Quality::Implausible, Condition::Critical, 12},
      {Quality::Inactive, Condition::Good, 13},    {Quality::Lost, Condition::Warning, 14},
  };
  for (const auto& row : rows) {
    const auto view = Object(row.quality, row.condition);
    EXPECT_EQ(AnswerFromReading(view, Question::State, std::nullopt), Answer::Of(row.state)) << row.state;
  }
  EXPECT_EQ(RawStateOf(Reading{}), RawState::Late) << "what was never read is not good";
}

TEST(Numbering, QuestionsAboutAnObject) {
  const auto good = Object(Quality::Good, Condition::Good, 4200.4);
  const auto late = Object(Quality::Late, Condition::Good, 4200.4);
  const auto huge = Object(Quality::Good, Condition::Good, 3e6);
  const auto refused = [](AnswerStatus status) { return Answer::Refusal(status); };
  const struct {
    const ObjectView& view;
    Question question;
    std::optional<nlohmann::json> data;
    Answer answer;
  } rows[] = {
      {good, Question::Name, {}, Answer::Of("Fan 1")},
      {good, Question::ReadingText, {}, Answer::Of("4200 RPM")},
      {late, Question::ReadingText, {}, Answer::Of("late")},
      {good, Question::Value, {}, Answer::Of(4200400)},
      {late, Question::Value, {}, refused(AnswerStatus::Failed)},
      {huge, Question::Value, {}, refused(AnswerStatus::Failed)},
      {good, Question::Age, {}, Answer::Of(4)},
      {good, Question::Redundancy, {}, Answer::Of(0)},
      {good, Question::StateAbove, 4000, Answer::Of(1)},
      {good, Question::StateAbove, 4201, Answer::Of(0)},
      {good, Question::StateBelow, 4201, Answer::Of(1)},
      {late, Question::StateAbove, 4000, Answer::Of(10)},
      {good, Question::StateAbove, "4000", refused(AnswerStatus::NotSupported)},
      {good, Question::StateAbove, {}, refused(AnswerStatus::NotSupported)},
      {good, Question::Count, {}, refused(AnswerStatus::NotSupported)},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(AnswerFromReading(row.view, row.question, row.data), row.answer) << WordOf(row.question);
  }
}

TEST(Numbering, RedundancyOfAGroup) {
  const struct {
    std::uint32_t present;
    RedundancyState state;
  } rows[] = {{4, RedundancyState::Full},
              {3, RedundancyState::Reduced},
              {2, RedundancyState::Reduced},
              {1, RedundancyState::Insufficient}};
  for (const auto& row : rows) {
    Reading reading;
    reading.redundancy = Redundancy{"fans", 4, 2, row.present};
    EXPECT_EQ(RedundancyStateOf(reading), row.state) << row.present;
  }
}

TEST(ReadingText, NumbersAndLimits) {
  const struct {
    Measurement measurement;
    const char* text;
    Condition condition;
    const char* breach;
  } rows[] = {
      {{41.5, Unit::Celsius, {{}, {}, 80, 90}}, "41.5 °C", Condition::Good, ""},
      {{80, Unit::Celsius, {{}, {}, 80, 90}}, "80 °C", Condition::Warning, "80 °C, less than 80 °C expected"},
      {{95, Unit::Celsius, {{}, {}, 120, 90}},
       "95 °C",
       Condition::Critical,
       "95 °C, less than 90 °C expected"},
      {{0, Unit::RevolutionsPerMinute, {600, 900, {}, {}}},
       "0 RPM",
       Condition::Critical,
       "0 RPM, at least 600 RPM expected"},
      {{700, Unit::RevolutionsPerMinute, {600, 900, {}, {}}},
       "700 RPM",
       Condition::Warning,
       "700 RPM, at least 900 RPM expected"},
      {{1536, Unit::Byte, {}}, "1.5 KiB", Condition::Good, ""},
      {{1e10, Unit::BitPerSecond, {}}, "10 Gbit/s", Condition::Good, ""},
      {{-0.01, Unit::Celsius, {}}, "0 °C", Condition::Good, ""},
      {{1.25, Unit::Volt, {}}, "1.25 V", Condition::Good, ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(NumberText(row.measurement.value, row.measurement.unit), row.text);
    EXPECT_EQ(ConditionByLimits(row.measurement), row.condition) << row.text;
    EXPECT_EQ(LimitBreach(row.measurement), row.breach);
  }
}

TEST(AssociationKey, LeadsToTheObject) {
  const auto fan = [](std::uint32_t index, std::uint32_t cabinet) {
    return std::optional(ObjectAddress{ObjectClass::Fan, index, cabinet});
  };
  const struct {
    const char* key;
    std::optional<ObjectAddress> object;
  } rows[] = {
      {"TRIQ:0102-0003-0002", fan(3, 7)},       {"TRIQ:0102-0003-0002-000C", fan(3, 12)},
      {"TRIQ:0102-0000-0002-000C", fan(0, 12)}, {"TRIQ:0102-000A-000D", fan(10, 7)},
      {"TRIQ:0102-FF00-0002", fan(0xFF00, 7)},  {"TRIQ:0102", std::nullopt},
      {"TRIQ:0102-0003", std::nullopt},         {"TRIQ:0102-0003-0001", std::nullopt},
      {"TRIQ:0103-0003-0099", std::nullopt},    {"TRIQ:0210-0003-0002", std::nullopt},
      {"TRIQ:0102-0003-0002-", std::nullopt},   {"TRIQ:0102-0003-0002-1-1", std::nullopt},
      {"TRIQ:01G2-0003-0002", std::nullopt},    {"TRIQ:", std::nullopt},
      {"SNMP:0102-0003-0002", std::nullopt},    {"", std::nullopt},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ObjectOfKey(row.key, 7), row.object) << row.key;
  }
}

}  // namespace
}  // namespace emstatus::host
