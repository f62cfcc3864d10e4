#include "data/JsonWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>

#include "tests/support/ValueBuilder.h"

namespace emstatus::test {
namespace {

TEST(JsonWriter, WritesEveryKindWithoutSpaces) {
  const struct {
    OwnedValue value;
    const char* text;
  } rows[] = {
      {OwnedValue(), "null"},
      {OwnedValue::Boolean(true), "true"},
      {OwnedValue::Boolean(false), "false"},
      {Object(), "{}"},
      {Array(), "[]"},
      {Text("x"), "\"x\""},
      {Object("a", Number(1), "b", Array(OwnedValue::Boolean(true), OwnedValue())),
       R"({"a":1,"b":[true,null]})"},
      {Array(Array(), Object("", Object("c", Text("")))), R"([[],{"":{"c":""}}])"},
      // Unknown kinds leave neither text nor separator, but the name before them stays and counts.
      {Tagged(7), ""},
      {Array(Tagged(7), Number(1), Tagged(0xFF), Number(2), Tagged(7)), "[1,2]"},
      {Object("a", Tagged(7), "b", Number(1)), R"({"a":"b",1})"},
  };
  for (const auto& row : rows) EXPECT_EQ(JsonText(row.value), row.text);

  OwnedValue oddName = OwnedValue::Object();
  AddMember(oddName, Number(5), Number(6));
  EXPECT_EQ(JsonText(oddName), R"({"":6})");
  OwnedValue withoutStorage = Object();
  withoutStorage.object = {nullptr, 3, 3};
  EXPECT_EQ(JsonText(withoutStorage), "{}");
}

TEST(JsonWriter, NumbersFollowTheirQualifiers) {
  const struct {
    std::uint32_t tag;
    std::uint64_t payload;
    const char* text;
  } rows[] = {
      {0x3E06, 0, "0"},
      {0x3A06, 4294967295, "4294967295"},
      {0x1606, static_cast<std::uint64_t>(-5), "-5"},
      {0x1606, static_cast<std::uint64_t>(INT32_MIN), "-2147483648"},
      {0x406, 0x1FFFFFFFF, "-1"},          // only the low 32 bits count
      {0x806, 0x1FFFFFFFF, "4294967295"},  // here too
      {0x1206, static_cast<std::uint64_t>(INT64_MIN), "-9223372036854775808"},
      {0x3206, 5000000000, "5000000000"},
      {0x2206, UINT64_MAX, "18446744073709551615"},
      {6, 0, "0"},  // no width at all: floating point
  };
  for (const auto& row : rows) {
    EXPECT_EQ(JsonText(Tagged(row.tag, row.payload)), row.text) << std::hex << row.tag;
  }
}

TEST(JsonWriter, FloatingPointIsWrittenAsPercentG) {
  const struct {
    double number;
    const char* text;
  } rows[] = {{0.1 + 0.2, "0.3"},         {1e20, "1e+20"},      {1.5e-7, "1.5e-07"}, {-0.0, "-0"},
              {1234567.0, "1.23457e+06"}, {100000.0, "100000"}, {HUGE_VAL, "inf"},   {std::nan(""), "nan"}};
  for (const auto& row : rows) EXPECT_EQ(JsonText(OwnedValue::Double(row.number)), row.text);
}

/// A byte as the text of a string holds it, by plain rules.
std::string Escaped(unsigned char byte) {
  switch (byte) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\b':
      return "\\b";
    case '\t':
      return "\\t";
    case '\n':
      return "\\n";
    case '\f':
      return "\\f";
    case '\r':
      return "\\r";
    default:
      break;
  }
  if (byte >= 0x20) return std::string(1, static_cast<char>(byte));
  char text[8];
  std::snprintf(text, sizeof(text), "\\u%04X", byte);
  return text;
}

// Texts are escaped a word at a time, so every byte has to meet every place in a word.
TEST(JsonWriter, EveryByteIsEscapedAtEveryPlace) {
  std::mt19937 random(1);
  for (int byte = 0; byte < 256; ++byte) {
    for (std::size_t length = 1; length <= 20; ++length) {
      std::string text(length, 'x');
      text[random() % length] = static_cast<char>(byte);
      text[random() % length] = static_cast<char>(random());
      std::string expected = "\"";
      for (const char c : text) expected += Escaped(static_cast<unsigned char>(c));
      ASSERT_EQ(JsonText(OwnedValue::Text(text)), expected + "\"") << byte << " in " << length;
    }
  }
}

TEST(JsonWriter, BufferGrowsFromAnySize) {
  std::string controls(1000, '\x1F');
  std::string expected = "\"";
  for (int i = 0; i < 1000; ++i) expected += "\\u001F";
  expected += "\"";
  for (const std::size_t start : {0U, 1U, 7U, 1024U}) {
    JsonWriter writer(start);
    writer.WriteString(controls.data(), 1000);
    EXPECT_EQ(writer.Text(), expected) << start;
    EXPECT_EQ(writer.TerminatedText()[expected.size()], '\0');
    const OwnedValue taken = writer.TakeText();
    EXPECT_EQ(TextOf(taken), expected);
    EXPECT_EQ(taken.tag, tag::kOwnedString);
    writer.WriteValue(Number(-12));
    EXPECT_EQ(writer.Text(), "-12");
  }
}

}  // namespace
}  // namespace emstatus::test
