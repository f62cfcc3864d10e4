#include "platform/ProfileFile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

using Names = std::vector<std::string>;

TEST(ProfileFile, ReadsNumbers) {
  const TemporaryDirectory directory;
  const struct {
    std::string text;
    int value;
  } rows[] = {
      {"16", 16},
      {"0x10", 16},
      {"010", 8},
      {"-1", -1},
      {"letters", 0},
      {"7 apples", 7},
      {"4294967295", -1},
      {"4294967298", 2},
      {"2147483648", -2147483647 - 1},
      {"99999999999999999999999", -1},
      {std::string(30, '0') + "17", 1},
      {"", 42},
  };
  ProfileFile file;
  for (const auto& row : rows) {
    ASSERT_EQ(file.Open(directory.Write("x.ini", "[s]\nk=" + row.text + "\n").c_str(), 1), 1);
    EXPECT_EQ(file.GetInt("s", "k", 42), row.value) << row.text;
  }
  EXPECT_EQ(file.GetInt("s", "missing", 42), 42);
  EXPECT_EQ(file.GetInt(nullptr, "k", 42), 42);
  EXPECT_EQ(file.GetInt("s", nullptr, 42), 42);
}

TEST(ProfileFile, OpensByNameOnlyOrWithATest) {
  const TemporaryDirectory directory;
  const std::string path = directory.Write("x.ini", "[s]\nk=v\n");
  const std::string missing = directory.File("missing.ini");
  ProfileFile file;
  EXPECT_STREQ(file.GetFileName(), "");
  EXPECT_EQ(file.Reopen(0), 0);
  EXPECT_EQ(file.Open(path.c_str(), 5), 5);
  EXPECT_EQ(file.IsOpen(), 5);
  EXPECT_EQ(file.Open(missing.c_str(), 1), 0);
  EXPECT_EQ(file.IsOpen(), 0);
  EXPECT_EQ(file.GetFileName(), missing);
  EXPECT_EQ(file.Open(missing.c_str(), 0), 1);
  EXPECT_EQ(file.Reopen(1), 0);
  EXPECT_EQ(file.Open(path.c_str(), 1), 1);
  EXPECT_EQ(file.Open(nullptr, 1), 0);
  EXPECT_STREQ(file.GetFileName(), "");
  EXPECT_EQ(file.Reopen(0), 0);
}

TEST(ProfileFile, DoesNothingWhileClosed) {
  const TemporaryDirectory directory;
  ProfileFile file;
  file.Open(directory.Write("x.ini", "[s]\nk=1\n").c_str(), 1);
  file.Close();
  std::string text = "before";
  Names names;
  EXPECT_EQ(file.GetString(text, "s", "k", "d"), 0);
  EXPECT_EQ(text, "before");
  EXPECT_EQ(file.GetInt("s", "k", 42), 42);
  EXPECT_STREQ(file.GetValue("s", "k", "d"), "d");
  EXPECT_STREQ(file.GetList("s"), "");
  EXPECT_STREQ(file.NextListEntry(), "");
  EXPECT_FALSE(file.GetSectionNames(names));
  EXPECT_EQ(file.WriteString("s", "k", "v") + file.WriteInt("s", "k", 1) + file.WriteUInt("s", "k", 1U), 0);
  EXPECT_EQ(file.DeleteSection("s") + file.DeleteKey("s", "k") + file.CopySection("s", "t"), 0);
  EXPECT_EQ(directory.Read("x.ini"), "[s]\nk=1\n");
  EXPECT_EQ(file.Reopen(1), 1);
  EXPECT_EQ(file.GetInt("s", "k", 42), 1);
}

TEST(ProfileFile, GrowsItsBuffersUpToALimit) {
  const TemporaryDirectory directory;
  std::string text = "[s]\nk=v\n";
  Names expected{"k"};
  for (int number = 1000; number < 10000; ++number) {
    expected.push_back(std::to_string(number));
    text += expected.back() + "=\n";
  }
  const std::string path = directory.Write("x.ini", text + "[many]\n");
  ProfileFile file;
  ASSERT_EQ(file.Open(path.c_str(), 1), 1);
  Names names{"kept"};
  EXPECT_TRUE(file.GetKeyNames(names, "s"));
  expected.insert(expected.begin(), "kept");
  EXPECT_EQ(names, expected);

  const std::string fits(64509, 'd');
  const std::string tooLong(64510, 'd');
  std::string out;
  EXPECT_EQ(file.GetString(out, "s", "missing", fits.c_str()), 1);
  EXPECT_EQ(out, fits);
  EXPECT_EQ(file.GetString(out, "s", "missing", tooLong.c_str()), 0);
  EXPECT_EQ(out, tooLong);
  EXPECT_EQ(file.GetValue("s", "missing", fits.c_str()), fits);
  EXPECT_EQ(file.GetValue("s", "missing", tooLong.c_str()), tooLong.c_str());
  EXPECT_STREQ(file.GetValue("s", "k", ""), "v");

  std::string sections;
  for (int number = 10000; number < 23000; ++number)
    sections.append("[").append(std::to_string(number)).append("]\n");
  directory.Write("x.ini", sections);
  EXPECT_STREQ(file.GetList(nullptr), "");
  EXPECT_STREQ(file.NextListEntry(), "");
}

TEST(ProfileFile, ListsNamesInTheOrderOfTheFile) {
  const TemporaryDirectory directory;
  ProfileFile file;
  file.Open(directory.Write("x.ini", "[b]\nz=1\n;c=1\ny\na =\n[a]\n[no\n[b]\nq=1\n").c_str(), 1);
  Names sections;
  Names keys;
  EXPECT_TRUE(file.GetSectionNames(sections));
  EXPECT_EQ(sections, (Names{"b", "a", "b"}));
  EXPECT_TRUE(file.GetKeyNames(keys, "b"));
  EXPECT_EQ(keys, (Names{"z", "a"}));
  EXPECT_FALSE(file.GetKeyNames(keys, "a"));
  EXPECT_FALSE(file.GetKeyNames(keys, nullptr));
  EXPECT_EQ(keys.size(), 2U);

  EXPECT_STREQ(file.GetList("b"), "z");
  EXPECT_STREQ(file.NextListEntry(), "a");
  EXPECT_STREQ(file.NextListEntry(), "");
  EXPECT_STREQ(file.NextListEntry(), "");
}

TEST(ProfileFile, WritesRemovesAndCopies) {
  const TemporaryDirectory directory;
  ProfileFile file;
  ASSERT_EQ(file.Open(directory.File("x.ini").c_str(), 0), 1);
  EXPECT_EQ(file.WriteString("s", "k", "v"), 1);
  EXPECT_EQ(file.WriteInt("s", "i", -1), 1);
  EXPECT_EQ(file.WriteUInt("s", "u", 4294967295U), 1);
  EXPECT_EQ(file.WriteString("s", "e", ""), 1);
  EXPECT_EQ(directory.Read("x.ini"), "\n[s]\n\nk=v\ni=-1\nu=4294967295\ne=\n");
  EXPECT_EQ(file.WriteString("t", "i", "own"), 1);
  EXPECT_EQ(file.CopySection("s", "t"), 1);
  EXPECT_EQ(directory.Read("x.ini"),
            "\n[s]\n\nk=v\ni=-1\nu=4294967295\ne=\n\n[t]\n\n\ni=-1\nk=v\nu=4294967295\ne=\n");
  EXPECT_EQ(file.DeleteKey("t", "i"), 1);
  EXPECT_EQ(file.DeleteKey("t", "i"), 0);
  EXPECT_EQ(file.DeleteSection("s"), 1);
  EXPECT_EQ(file.DeleteSection("s"), 0);
  EXPECT_EQ(directory.Read("x.ini"), "\n[t]\n\n\nk=v\nu=4294967295\ne=\n");
  EXPECT_EQ(file.DeleteKey("t", nullptr), 0);
  EXPECT_EQ(file.WriteInt("t", nullptr, 1) + file.WriteUInt("t", nullptr, 1U), 0);
  EXPECT_EQ(file.WriteString("t", "k", nullptr), 1);
  EXPECT_EQ(directory.Read("x.ini"), "\n[t]\n\n\nu=4294967295\ne=\n");
}

}  // namespace
}  // namespace emstatus::test
