#include "data/CommandValue.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "data/JsonWriter.h"
#include "tests/support/ValueBuilder.h"

namespace emstatus::test {
namespace {

TEST(CommandValue, IntegersCarryTheWidthsThatHoldThem) {
  const struct {
    std::int64_t number;
    std::uint32_t tag;
  } rows[] = {
      {0, 0x3E06},          {0x7FFFFFFF, 0x3E06},  {0x80000000, 0x3A06},
      {0xFFFFFFFF, 0x3A06}, {0x100000000, 0x3206}, {INT64_MAX, 0x3206},
      {-1, 0x1606},         {INT32_MIN, 0x1606},   {INT64_C(-0x80000001), 0x1206},
      {INT64_MIN, 0x1206},
  };
  for (const auto& row : rows) {
    const OwnedValue value = OwnedValue::Integer(row.number);
    EXPECT_EQ(value.tag, row.tag) << row.number;
    EXPECT_EQ(value.signedNumber, row.number);
  }
  EXPECT_EQ(OwnedValue::UInt32(0xFFFFFFFF).tag, 0x3A06u);
  EXPECT_EQ(OwnedValue::Constant("a").tag, 0x100005u);
  EXPECT_EQ(OwnedValue::Text("a").tag, 0x300005u);
  const std::string_view text("abc");
  const OwnedValue reference = OwnedValue::Reference(text.substr(0, 2));
  EXPECT_EQ(reference.tag, 0x100005u);
  EXPECT_EQ(TextOf(reference), "ab");
  EXPECT_EQ(TextOf(reference).data(), text.data());
}

TEST(CommandValue, StorageStartsWithSixteenEntriesAndDoubles) {
  OwnedValue array = OwnedValue::Array();
  OwnedValue object = OwnedValue::Object();
  for (std::uint32_t i = 1; i <= 33; ++i) {
    Append(array, Number(i));
    AddMember(object, "n", Number(i));
    const std::uint32_t expected = i <= 16 ? 16 : i <= 32 ? 32 : 64;
    EXPECT_EQ(array.array.capacity, expected) << i;
    EXPECT_EQ(object.object.capacity, expected) << i;
  }
  EXPECT_EQ(LowBits(Elements(array)[16]), 17u);
  EXPECT_EQ(LowBits(Members(object)[32].value), 33u);
}

// A host may have filled the counts in any way; only what lies between storage and count is there.
TEST(CommandValue, StorageOfAHostGrowsWhateverItsCapacity) {
  for (const std::uint32_t capacity : {0u, 1u, 3u}) {
    OwnedValue array = OwnedValue::Array();
    array.array = {static_cast<CommandValue*>(std::calloc(3, sizeof(CommandValue))), 3, capacity};
    EXPECT_TRUE(Append(array, Number(7)));
    EXPECT_EQ(JsonText(array), "[null,null,null,7]") << capacity;
    EXPECT_GE(array.array.capacity, 4u);
  }
  for (const std::uint32_t tag : {tag::kObject, tag::kArray}) {
    OwnedValue empty = Tagged(tag);
    empty.array = {nullptr, 5, 9};
    EXPECT_TRUE(Members(empty).empty() && Elements(empty).empty());
    EXPECT_EQ(FindMember(empty, "a"), nullptr);
    EXPECT_EQ(Append(empty, Number(1)), tag == tag::kArray);
    EXPECT_EQ(AddMember(empty, "a", Number(1)), tag == tag::kObject);
    EXPECT_EQ(empty.array.count, 1u);
  }
}

TEST(CommandValue, ACountAtItsEndRefusesMore) {
  CommandValue entry[2] = {};
  OwnedValue array = Array();
  array.array = {entry, UINT32_MAX, UINT32_MAX};
  EXPECT_THROW(Append(array, Text("released")), std::bad_alloc);
  EXPECT_EQ(array.array.elements, entry);
  static_cast<void>(array.release());
}

TEST(CommandValue, MembersAreFoundByTheWholeNameAndTheFirstWins) {
  OwnedValue object = Object("ST", Number(1), "STX", Number(2), "ST", Number(3));
  AddMember(object, Number(4), Number(4));
  AddMember(object, OwnedValue::Text({"a\0b", 3}), Number(5));
  const struct {
    std::string_view name;
    std::uint32_t value;
  } rows[] = {{"ST", 1}, {"STX", 2}, {{"a\0b", 3}, 5}};
  for (const auto& row : rows) EXPECT_EQ(LowBits(MemberOrEmpty(object, row.name)), row.value) << row.name;
  for (const std::string_view none : {"S", "", "st", "a"})
    EXPECT_EQ(FindMember(object, none), nullptr) << none;
  EXPECT_EQ(FindMember(Array(), "ST"), nullptr);
}

TEST(CommandValue, SettingReplacesAndRemovingKeepsTheOrder) {
  OwnedValue object = Object("a", Text("old"), "b", Number(2), "c", Number(3));
  EXPECT_TRUE(SetMember(object, "a", Array(Text("new"))));
  EXPECT_TRUE(SetMember(object, "d", Number(4)));
  EXPECT_TRUE(RemoveMember(object, "b"));
  EXPECT_FALSE(RemoveMember(object, "b"));
  EXPECT_EQ(JsonText(object), R"({"a":["new"],"c":3,"d":4})");
  OwnedValue text = Text("x");
  EXPECT_FALSE(SetMember(text, "a", Text("lost")));
}

TEST(CommandValue, ElementsAreMadeOnlyWithinReach) {
  OwnedValue array = Array(Number(1));
  EXPECT_EQ(KindOf(*EnsureElement(array, 2)), CommandKind::Object);
  EXPECT_EQ(JsonText(array), "[1,{},{}]");
  EXPECT_EQ(EnsureElement(array, 3 + kMostNewElements), nullptr);
  EXPECT_EQ(EnsureElement(array, 0xFFFFFFFF), nullptr);
  EXPECT_EQ(array.array.count, 3u);
  EXPECT_NE(EnsureElement(array, 2 + kMostNewElements), nullptr);
  EXPECT_EQ(array.array.count, 3 + kMostNewElements);
}

TEST(CommandValue, MovingLeavesNullAndAssigningReleases) {
  OwnedValue first = Array(Text("one"));
  OwnedValue second = std::move(first);
  EXPECT_EQ(first.tag, tag::kNull);
  second = Object("two", Text("three"));
  EXPECT_EQ(JsonText(second), R"({"two":"three"})");
  CommandValue handedOver = second.release();
  EXPECT_EQ(second.tag, tag::kNull);
  Release(handedOver);
  EXPECT_EQ(handedOver.tag, tag::kNull);
}

enum class Nesting { Arrays, Mixed };

/// One-entry containers within each other: arrays, or by turns an array, an object, an object with the rest
/// as a name.
OwnedValue Nested(std::uint32_t depth, Nesting nesting) {
  OwnedValue value = Text("core");
  for (std::uint32_t i = 0; i < depth; ++i) {
    const bool isObject = nesting == Nesting::Mixed && i % 3 != 0;
    OwnedValue outer = isObject ? OwnedValue::Object() : OwnedValue::Array();
    const std::size_t entries = isObject ? 2 : 1;
    outer.array = {static_cast<CommandValue*>(std::calloc(entries, sizeof(CommandValue))), 1, 1};
    outer.array.elements[isObject && i % 3 == 1 ? 1 : 0] = value.release();
    value = std::move(outer);
  }
  return value;
}

TEST(CommandValue, ReleaseAndWriterSurviveAMillionLevels) {
  constexpr std::uint32_t kDepth = 1000000;
  OwnedValue arrays = Nested(kDepth, Nesting::Arrays);
  EXPECT_EQ(JsonText(arrays).size(), 2 * kDepth + 6);
  OwnedValue mixed = Nested(kDepth, Nesting::Mixed);
  Release(mixed);
  EXPECT_EQ(mixed.tag, tag::kNull);
}

TEST(CommandValue, ReleaseReachesEverythingBesideAndBelow) {
  OwnedValue value =
      Array(Text("a"), Object("b", Array(Text("c"), Object()), "d", Text("e")), Text("f"), Array());
  AddMember(*EnsureElement(value, 1), Array(Text("a name that is none")), Object("g", Text("h")));
  CommandValue copy = value.release();
  Release(copy);  // what it misses is a leak
}

}  // namespace
}  // namespace emstatus::test
