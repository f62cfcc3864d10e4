#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "platform/PrivateProfile.h"
#include "platform/ProfileFile.h"
#include "tests/platform/ReferenceProfileReader.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

using namespace std::string_literals;

/// What the buffer received, up to the length returned, and for a list the zero there.
std::string Read(const char* section, const char* key, const char* defaultText, std::size_t size,
                 const std::string& path) {
  std::vector<char> buffer(size + 1, '#');
  const std::uint32_t length = GetPrivateProfileString(section, key, defaultText, buffer.data(),
                                                       static_cast<std::uint32_t>(size), path.c_str());
  EXPECT_EQ(buffer[size], '#') << "wrote behind the buffer";
  EXPECT_EQ(buffer[length], '\0');
  const bool isList = section == nullptr || key == nullptr;
  if (!isList || length == 0) return {buffer.data(), length};
  EXPECT_TRUE(buffer[length - 1] == '\0' || buffer[length + 1] == '\0') << "the list is not closed";
  return {buffer.data(), length + 1};
}

std::string Value(const std::string& path, const char* section, const char* key) {
  return Read(section, key, "<default>", 1024, path);
}

TEST(PrivateProfile, ReadsValues) {
  const TemporaryDirectory directory;
  const std::string x1000(1000, 'x');
  const struct {
    const char* what;
    std::string text;
    const char* value;
  } rows[] = {
      {"blanks and a comment around the value", "[s]\n \tk \t=  v w ;comment\n", "v w"},
      {"no value is a missing key", "[s]\nk=\nk=second\n", "<default>"},
      {"a value of blanks too", "[s]\nk= \t ;x\n", "<default>"},
      {"the first line wins", "[s]\nk=1\nk=2\n", "1"},
      {"comment with blanks in front", "[s]\n   ;k=1\n\nk=2\n", "2"},
      {"equals signs in the value", "[s]\nk=a=b\n", "a=b"},
      {"names keep their case", "[S]\nk=0\n[s]\nK=1\nk=2\n", "2"},
      {"no line feed at the end", "[s]\nk=v", "v"},
      {"carriage returns", "[s]\r\nk=v\r\n", "v"},
      {"only the first section of a name", "[s]\na=1\n[s]\nk=2\n", "<default>"},
      {"not beyond the section", "[s]\na=1\n[t]\nk=2\n", "<default>"},
      {"text after the header", "  [s] k=0\nk=v\n", "v"},
      {"a blank before the bracket", "[s ]\nk=1\n", "<default>"},
      {"a blank after the bracket", "[ s]\nk=1\n", "<default>"},
      {"a header in a comment", ";[s]\nk=1\n", "<default>"},
      {"a comment in a header", "[s;]\nk=1\n", "<default>"},
      {"a bracket within a line is no header", "x[s]\nk=1\n[s]\nk=2\n", "2"},
      {"a longer name", "[s]]\nk=1\n", "1"},
      {"keys before any section", "k=1\n[s]\n", "<default>"},
      {"a line without equals sign", "[s]\nk\nk=v\n", "v"},
      {"a header at the 1024th character of a line", x1000 + std::string(23, ' ') + "[s]\nk=v\n", "v"},
      {"not at the 1023rd", x1000 + std::string(22, ' ') + "[s]\nk=v\n", "<default>"},
      {"nor behind blanks at the 1021st", std::string(1020, ' ') + "[s]\nk=v\n", "v"},
      {"an entry at the 1024th character", "[s]\na=" + x1000 + std::string(21, '-') + "k=v\n", "v"},
      {"a zero byte ends its line", "[s]\nk=v\0w\nl=1\n"s, "v"},
      {"a zero byte before a header", "\0[s]\nk=v\n"s, "<default>"},
      {"nothing at all", "", "<default>"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(Value(directory.Write("x.ini", row.text), "s", "k"), row.value) << row.what;
  EXPECT_EQ(Value(directory.File("missing.ini"), "s", "k"), "<default>");
  EXPECT_EQ(Value(directory.Path().string(), "s", "k"), "<default>")
      << "a directory opens, but cannot be read";
  EXPECT_EQ(Read("s", "k", nullptr, 64, directory.File("missing.ini")), "");
  EXPECT_EQ(Read("s", nullptr, "<default>", 64, directory.File("missing.ini")), "");
  EXPECT_EQ(Read("s", "k", "<default>", 4, directory.File("missing.ini")), "<de");
  char untouched = '#';
  EXPECT_EQ(GetPrivateProfileString("s", "k", "d", &untouched, 0, "x"), 0U);
  EXPECT_EQ(untouched, '#');
  EXPECT_EQ(CheckedGetPrivateProfileString("s", "k", "d", nullptr, 10, "x"), 0U);
  EXPECT_EQ(CheckedGetPrivateProfileString("s", "k", "d", &untouched, 1, nullptr), 0U);
}

/// A file full of what can go wrong: long lines, brackets anywhere, zero bytes, missing line feeds.
std::string HostileText(std::mt19937& random) {
  static const std::string pieces[] = {"[",   "]",       "[a]", "[b]\n",     "\n",    "\n",  "\n\n", "=",
                                       "k=1", "k = v w", " ",   "\t",        "\n[a]", ";",   "\r\n", "\n k",
                                       "[a",  "\v",      "kk=", "\n[b]\nk=", "a]",    "=[a]"};
  std::string text;
  const std::size_t length = random() % 3 == 0 ? 200000 : 6000;
  while (text.size() < length) {
    const auto pick = random() % 64;
    if (pick == 0) {
      // Long enough for the limits of a line and, at times, of what is read at once.
      const std::size_t base[] = {1020, 2043, 3069, 65533};
      text.append(base[random() % 4] + random() % 6, random() % 2 == 0 ? ' ' : 'x');
    } else if (pick == 1) {
      text.push_back('\0');
    } else {
      text += pieces[random() % std::size(pieces)];
    }
  }
  return text;
}

TEST(PrivateProfile, ReadsAsThePlainReaderDoes) {
  const TemporaryDirectory directory;
  std::mt19937 random(20240229);
  int found = 0;
  for (int round = 0; round < 300; ++round) {
    const std::string path = directory.Write("x.ini", HostileText(random));
    for (const char* section : {"a", "b", "", static_cast<const char*>(nullptr)}) {
      for (const char* key : {"k", "kk", "", static_cast<const char*>(nullptr)}) {
        for (const std::size_t size : {std::size_t{3}, std::size_t{5 + random() % 60}, std::size_t{64512}}) {
          const std::string expected = ReferenceProfileString(section, key, "dd", size, path);
          ASSERT_EQ(Read(section, key, "dd", size, path), expected)
              << round << ' ' << (section ? section : "(null)") << ' ' << (key ? key : "(null)") << ' '
              << size;
          found += expected != "dd" && !expected.empty();
        }
      }
    }
  }
  EXPECT_GT(found, 3000);
}

}  // namespace
}  // namespace emstatus::test
