#include "data/DataBytes.h"

#include <gtest/gtest.h>

#include <optional>

#include "data/JsonWriter.h"
#include "tests/support/ValueBuilder.h"

namespace emstatus::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(DataBytes, FollowTheKindOfTheData) {
  struct {
    OwnedValue data;
    std::optional<Bytes> bytes;
  } rows[] = {
      {Number(0), Bytes{0}},
      {Number(255), Bytes{255}},
      {Number(256), Bytes{0, 1}},
      {Number(300), Bytes{0x2C, 1}},
      {Number(0xFFFF), Bytes{0xFF, 0xFF}},
      {Number(0x12345), Bytes{0x45, 0x23, 0x01, 0x00}},
      {Number(0xFFFFFFFF), Bytes{0xFF, 0xFF, 0xFF, 0xFF}},
      {Number(0x100000000), Bytes{0, 0, 0, 0, 1, 0, 0, 0}},
      {Number(-1), std::nullopt},
      {OwnedValue::Double(1), std::nullopt},
      {OwnedValue(), std::nullopt},
      {OwnedValue::Boolean(true), std::nullopt},
      {Tagged(9), std::nullopt},
      {Text(""), Bytes{0}},
      {Text("ab\0c"), Bytes{'a', 'b', 0}},
      {Array(), Bytes{}},
      {Array(Number(1), Text("a")), Bytes{}},
      {Array(Text("ab"), Text("c")), Bytes{'a', 'b', 0, 'c', 0, 0}},
      {Array(Text("a\0b"), Number(1)), Bytes{'a', 0, 0, 0}},
      {Object("RAW", Array(Number(1), Number(2), Number(258))), Bytes{1, 2, 2}},
      {Object("RAW", Array(Number(1), Number(-1))), Bytes{1, 255}},
      {Object("RAW", Array(Number(-1), Number(1))), Bytes{}},
      {Object("RAW", Array()), Bytes{}},
      {Object("RAW", Text("ab")), Bytes{}},
      {Object("raw", Array(Number(1))), Bytes{}},
  };
  for (auto& row : rows) {
    const std::string shown = JsonText(row.data);
    const OwnedCommand command = CommandWith("OC", Number(1), "DA", std::move(row.data));
    Bytes bytes{99};
    EXPECT_EQ(GetDataBytes(command.document, 0, bytes), row.bytes.has_value()) << shown;
    EXPECT_EQ(bytes, row.bytes.value_or(Bytes{})) << shown;
  }
}

TEST(DataBytes, NeedACommandWithData) {
  OwnedCommand command =
      CommandOf(Object("SIP", Object("CMD", Array(Object(), Text("ab"), Object("DA", Number(7))))));
  const struct {
    std::uint32_t index;
    std::optional<Bytes> bytes;
  } rows[] = {
      {0, std::nullopt}, {1, std::nullopt}, {2, Bytes{7}}, {3, std::nullopt}, {0xFFFFFFFF, std::nullopt}};
  for (const auto& row : rows) {
    Bytes bytes{99};
    EXPECT_EQ(GetDataBytes(command.document, row.index, bytes), row.bytes.has_value()) << row.index;
    EXPECT_EQ(bytes, row.bytes.value_or(Bytes{})) << row.index;
  }
}

}  // namespace
}  // namespace emstatus::test
