#include <gtest/gtest.h>

#include "host/module/CommandJson.h"
#include "host/module/CommandReader.h"
#include "host/module/OwnedCommand.h"

namespace emstatus::host {
namespace {

TEST(CommandJson, ValuesCrossAndComeBack) {
  for (const char* text :
       {"null", "true", "false", "0", "-1", "2147483648", "-2147483649", "4294967296", "18446744073709551615",
        "1.5", "\"\"", "\"a\\u0000b\"", "[]", "{}", "[1,[2,{\"a\":\"b\"}],null]", "{\"RAW\":[1,2,255]}"}) {
    CommandValue value = MakeValue(nlohmann::json::parse(text));
    EXPECT_EQ(ToJson(value).dump(), nlohmann::json::parse(text).dump());
    ReleaseValue(value);
    EXPECT_EQ(value.tag, 0U) << text;
  }
}

TEST(CommandJson, TagsSayWhatANumberFits) {
  const struct {
    const char* number;
    std::uint32_t tag;
  } rows[] = {{"0", tag::kUInt31}, {"2147483647", tag::kUInt31}, {"2147483648", tag::kUInt32},
              {"-1", 0x1606},      {"-2147483649", 0x1206},      {"4294967296", 0x3206},
              {"1.5", 0x206}};
  for (const auto& row : rows) {
    EXPECT_EQ(MakeValue(nlohmann::json::parse(row.number)).tag, row.tag) << row.number;
  }
}

TEST(CommandJson, MembersGrowAndAreReplaced) {
  CommandValue object = MakeValue(nlohmann::json::object());
  static const char* const kNames[] = {"A", "B", "C", "D", "E", "F", "G", "H", "I",
                                       "J", "K", "L", "M", "N", "O", "P", "Q"};
  for (const char* name : kNames) {
    SetMember(object, name, MakeValue(name));
  }
  EXPECT_EQ(object.object.capacity, 32U);
  SetMember(object, "Q", MakeValue("new"));
  EXPECT_EQ(object.object.count, 17U);
  EXPECT_EQ(ToJson(*FindMember(object, "Q")), "new");
  ReleaseValue(object);
}

TEST(CommandJson, HostileValuesReadAsNull) {
  CommandValue unknown{};
  unknown.tag = 7;
  EXPECT_EQ(ToJson(unknown), nullptr);
  CommandValue text{};
  text.tag = tag::kConstantString;
  text.string.length = 5;
  EXPECT_EQ(ToJson(text), "");
  nlohmann::json deep = 1;
  for (int level = 0; level < 500; ++level) {
    deep = nlohmann::json::array({deep});
  }
  CommandValue value = MakeValue(deep);
  EXPECT_LT(ToJson(value).dump().size(), 200U);
  ReleaseValue(value);
}

TEST(CommandReader, AnswerTakesThePlaceOfTheRequestsData) {
  OwnedCommand command({0x0101, 2, 3, 4, nlohmann::json("limit")});
  const Request request = ReadRequest(command.Get());
  EXPECT_EQ(request.code, 0x0101U);
  EXPECT_EQ(request.extension, 2U);
  EXPECT_EQ(request.object, 3U);
  EXPECT_EQ(request.cabinet, 4U);
  EXPECT_EQ(request.data, nlohmann::json("limit"));
  EXPECT_EQ(ReadNumber(command.Get(), "ST", kNoStatus), kNoStatus);

  ASSERT_TRUE(WriteAnswer(command.Get(), Answer::Of(7)));
  EXPECT_EQ(ReadNumber(command.Get(), "ST", kNoStatus), 0U);
  EXPECT_EQ(ReadData(command.Get()), nlohmann::json(7));
  ASSERT_TRUE(WriteAnswer(command.Get(), Answer::Refusal(AnswerStatus::Failed)));
  EXPECT_EQ(ReadNumber(command.Get(), "ST", kNoStatus), 6U);
  EXPECT_EQ(ReadData(command.Get()), nlohmann::json(nullptr));
}

TEST(CommandReader, CommandWithoutPlaceIsLeftAlone) {
  OwnedCommand command({1, 2, 3, 4, std::nullopt});
  command.Get().current = 1;
  EXPECT_EQ(CurrentCommand(command.Get()), nullptr);
  EXPECT_FALSE(WriteAnswer(command.Get(), Answer::Of(7)));
  HostCommand empty{};
  EXPECT_EQ(ReadRequest(empty).code, 0U);
  EXPECT_FALSE(WriteAnswer(empty, Answer::Of(7)));
}

TEST(CommandReader, NumbersFromRawBytes) {
  const struct {
    const char* data;
    std::optional<std::uint32_t> number;
  } rows[] = {{"513", 513},
              {"{\"RAW\":[1,2]}", 513},
              {"{\"RAW\":[1,2,3,4,5]}", 0x04030201},
              {"{\"RAW\":[]}", 0},
              {"\"1\"", std::nullopt},
              {"1.5", std::nullopt},
              {"{\"RAW\":1}", std::nullopt}};
  for (const auto& row : rows) {
    EXPECT_EQ(NumberOf(nlohmann::json::parse(row.data)), row.number) << row.data;
  }
  EXPECT_EQ(NumberOf(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace emstatus::host
