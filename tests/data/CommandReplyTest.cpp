#include "data/CommandReply.h"

#include <gtest/gtest.h>

#include "data/JsonWriter.h"
#include "tests/support/ValueBuilder.h"

namespace emstatus::test {
namespace {

TEST(CommandReply, IsCompletedByFourStatusesOnly) {
  struct {
    OwnedValue status;
    bool completed;
    std::uint32_t number;
  } rows[] = {
      {Number(0), true, 0},      {Number(12), true, 12},        {Number(21), true, 21},
      {Number(255), true, 255},  {Number(1), false, 1},         {Number(22), false, 22},
      {Number(256), false, 256}, {Number(0x10C), false, 0x10C}, {Number(-1), false, ~0u},
      {Text("0xC"), true, 12},   {OwnedValue(), false, 22},
  };
  for (auto& row : rows) {
    const std::string shown = JsonText(row.status);
    const Reply reply = ReadReply(CommandWith("ST", std::move(row.status), "DA", Number(5)));
    EXPECT_EQ(reply.completed, row.completed) << shown;
    EXPECT_EQ(reply.status, row.number) << shown;
    EXPECT_EQ(reply.number.has_value(), row.completed) << shown;
  }
  EXPECT_EQ(ReadReply(CommandWith("DA", Number(5))).status, 22u);
  EXPECT_FALSE(ReadReply(CommandOf(OwnedValue())).completed);
}

TEST(CommandReply, DataIsANumberOrATextOrNeither) {
  struct {
    OwnedValue data;
    std::optional<std::int32_t> number;
    std::optional<std::string> text;
  } rows[] = {
      {Number(7), 7, {}},
      {Number(-7), -7, {}},
      {Number(0xFFFFFFFF), -1, {}},
      {Number(0x100000003), 3, {}},
      {Object("RAW", Array()), 0, {}},
      {Object("RAW", Array(Number(200))), 200, {}},
      {Object("RAW", Array(Number(1), Number(2))), 513, {}},
      {Object("RAW", Array(Number(1), Number(2), Number(3))), 0x30201, {}},
      {Object("RAW", Array(Number(1), Number(2), Number(3), Number(4))), 0x4030201, {}},
      {Object("RAW", Array(Number(255), Number(255), Number(255), Number(255), Number(9))), -1, {}},
      {Object("RAW", Text("x")), 0, {}},
      {Text("name"), {}, "name"},
      {Text("na\0me"), {}, "na"},
      {Text(""), {}, ""},
      {Object("raw", Array(Number(1))), {}, {}},
      {Array(Number(1)), {}, {}},
      {OwnedValue::Boolean(true), {}, {}},
      {OwnedValue(), {}, {}},
  };
  for (auto& row : rows) {
    const std::string shown = JsonText(row.data);
    const Reply reply = ReadReply(CommandWith("ST", Number(0), "DA", std::move(row.data)));
    EXPECT_EQ(reply.number, row.number) << shown;
    EXPECT_EQ(reply.text, row.text) << shown;
  }
}

}  // namespace
}  // namespace emstatus::test
