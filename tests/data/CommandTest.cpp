#include "data/Command.h"

#include <gtest/gtest.h>

#include "data/JsonWriter.h"
#include "tests/support/ValueBuilder.h"

namespace emstatus::test {
namespace {

TEST(Command, IntegersAreReadFromNumbersAndTexts) {
  constexpr std::uint32_t kFallback = 77;
  struct {
    OwnedValue member;
    std::uint32_t number;
  } rows[] = {
      {Number(0), 0},
      {Number(0xFFFFFFFF), 0xFFFFFFFF},
      {Number(-1), 0xFFFFFFFF},
      {Number(0x100000002), 2},
      {OwnedValue(), kFallback},
      {OwnedValue::Boolean(true), kFallback},
      {Object(), kFallback},
      {Array(Number(1)), kFallback},
      {Tagged(8), kFallback},
      {Text(""), 0},
      {Text("7"), 7},
      {Text("0"), 0},
      {Text("07"), 7},
      {Text("08"), 0},
      {Text("9"), 9},
      {Text("19"), 19},
      {Text("0x"), 0},
      {Text("0x1F"), 31},
      {Text("0Xabcdefg"), 0xABCDEF},
      {Text("0xFFFFFFFF"), 0xFFFFFFFF},
      {Text("017"), 15},
      {Text("0178"), 15},
      {Text("010"), 8},
      {Text("100"), 100},
      {Text("4294967295"), 4294967295},
      {Text("12a"), 12},
      {Text("-5"), 0},
      {Text(" 5"), 0},
      {Text("none"), 0},
      {Text("1\0002"), 1},
  };
  for (auto& row : rows) {
    const std::string shown = JsonText(row.member);
    const OwnedCommand command = CommandWith("OC", std::move(row.member));
    EXPECT_EQ(GetInt(command, "OC", kFallback), row.number) << shown;
    EXPECT_EQ(GetInt(command, "OE", kFallback), kFallback);
  }
}

TEST(Command, DataIsToldByItsKind) {
  struct {
    OwnedValue data;
    CommandKind kind;
    bool isStruct;
  } rows[] = {
      {Number(1), CommandKind::Number, false},
      {Object("RAW", Number(1)), CommandKind::Object, false},
      {Object("raw", Number(1)), CommandKind::Object, true},
      {Array(), CommandKind::Array, false},
      {OwnedValue(), CommandKind::Null, false},
  };
  for (auto& row : rows) {
    const OwnedCommand command = CommandWith("DA", std::move(row.data));
    EXPECT_TRUE(HasMember(command, "DA"));
    EXPECT_EQ(DataKind(command), row.kind);
    EXPECT_EQ(IsDataStruct(command), row.isStruct);
  }
  const OwnedCommand without;
  EXPECT_FALSE(HasMember(without, "DA"));
  EXPECT_EQ(DataKind(without), CommandKind::Null);
  EXPECT_FALSE(IsDataStruct(without));
}

// What hosts may send: each document is read without harm and takes a status only where it has a place for
// one.
TEST(Command, StatusGoesWhereTheDocumentHasAPlace) {
  struct {
    OwnedValue document;
    std::uint32_t current;
    bool isSet;
    const char* after;
  } rows[] = {
      {OwnedValue(), 0, false, "null"},
      {Text("SIP"), 0, false, "\"SIP\""},
      {Object(), 0, false, "{}"},
      {Object("SIP", Array()), 0, false, R"({"SIP":[]})"},
      {Object("SIP", Object()), 0, false, R"({"SIP":{}})"},
      {Object("SIP", Object("CMD", Object())), 0, false, R"({"SIP":{"CMD":{}}})"},
      {Object("SIP", Object("CMD", Text("x"))), 0, false, R"({"SIP":{"CMD":"x"}})"},
      {Object("SIP", Object("CMD", Array(Number(1)))), 0, false, R"({"SIP":{"CMD":[1]}})"},
      {Object("SIP", Object("CMD", Array())), 3, true, R"({"SIP":{"CMD":[{},{},{},{"ST":1}]}})"},
      {Object("SIP", Object("CMD", Array(Number(1)))), 1, true, R"({"SIP":{"CMD":[1,{"ST":1}]}})"},
      {Object("SIP", Object("CMD", Array())), 0xFFFFFFFF, false, R"({"SIP":{"CMD":[]}})"},
      {Object("SIP", Object("CMD", Array())), kMostNewElements, false, R"({"SIP":{"CMD":[]}})"},
      {Object("SIP", Object("CMD", Array(Object("ST", Text("old"), "OC", Number(2))))), 0, true,
       R"({"SIP":{"CMD":[{"ST":1,"OC":2}]}})"},
  };
  for (auto& row : rows) {
    OwnedCommand command = CommandOf(std::move(row.document), row.current);
    EXPECT_EQ(GetInt(command, "OE", 5), 5u) << row.after;
    EXPECT_EQ(SetStatus(command, 1), row.isSet) << row.after;
    EXPECT_EQ(JsonText(command.document), row.after);
    EXPECT_EQ(SetDataByte(command, 2), row.isSet) << row.after;
    EXPECT_EQ(GetInt(command, "DA", 0) == 2, row.isSet) << row.after;
  }
}

TEST(Command, DatumReplacesTheOldOneAndClearsTheStatus) {
  OwnedCommand command = CommandWith("DA", Text("request"), "ST", Number(19));
  const std::uint8_t bytes[] = {0, 255};
  const auto text = [&command] { return JsonText(*CurrentCommand(command)); };
  EXPECT_TRUE(SetDataByte(command, 0xFF));
  EXPECT_EQ(text(), R"({"DA":255,"ST":0})");
  EXPECT_TRUE(SetDataWord(command, 0x80000000));
  EXPECT_EQ(text(), R"({"DA":2147483648,"ST":0})");
  EXPECT_TRUE(SetDataBoolean(command, false));
  EXPECT_EQ(text(), R"({"DA":false,"ST":0})");
  EXPECT_TRUE(SetDataString(command, std::string("copied")));
  EXPECT_EQ(text(), R"({"DA":"copied","ST":0})");
  EXPECT_TRUE(SetDataRaw(command, bytes));
  EXPECT_EQ(text(), R"({"DA":{"RAW":[0,255]},"ST":0})");
}

TEST(Command, AnOwnCommandHasItsMembersInOrder) {
  OwnedCommand command({.operation = 0x2300, .extension = 1, .object = 0xFFFFFFFF, .cabinet = 7});
  command.AddData(Text("x"));
  EXPECT_EQ(JsonText(command.document),
            R"({"SIP":{"CMD":[{"OC":8960,"OE":1,"OI":4294967295,"CA":7,"DA":"x"}]}})");
  OwnedCommand moved = std::move(command);
  EXPECT_EQ(command.document.tag, tag::kNull);
  EXPECT_EQ(GetInt(moved, "CA", 0), 7u);
  moved = OwnedCommand();
  EXPECT_EQ(JsonText(moved.document), R"({"SIP":{"CMD":[{}]}})");
}

}  // namespace
}  // namespace emstatus::test
