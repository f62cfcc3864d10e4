#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "platform/PrivateProfile.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TraceCapture.h"
#include "tests/support/TraceLevel.h"

namespace emstatus::test {
namespace {

using namespace std::string_literals;

struct WriteCase {
  const char* what;
  std::string before;
  const char* key;
  const char* value;
  bool result;
  std::string after;
};

TEST(PrivateProfile, ChangesFilesInPlace) {
  const TemporaryDirectory directory;
  const std::string x1000(1000, 'x');
  const std::string far = "[t]\nz=" + std::string(200000, 'z') + "\n";
  const WriteCase rows[] = {
      {"first entry: an empty line each time", "[s]\nk=1\nl=2\n", "k", "v", true, "[s]\n\nk=v\nl=2\n"},
      {"and once more", "[s]\n\nk=v\nl=2\n", "k", "w", true, "[s]\n\n\nk=w\nl=2\n"},
      {"second entry", "[s]\nk=1\nl \t=2\nm=3\n", "l", "v", true, "[s]\nk=1\nl=v\nm=3\n"},
      {"a line without equals sign counts", "[s]\njunk\nk=1\n", "k", "v", true, "[s]\njunk\nk=v\n"},
      {"a comment does not", "[s]\n;k=0\nk=1\n", "k", "v", true, "[s]\n;k=0\n\nk=v\n"},
      {"blanks in front count", "[s]\na=1\n k=1\n", "k", "v", true, "[s]\na=1\n k=1\nk=v\n"},
      {"a shorter value", "[s]\na=1\nk=12345\nl=2\n", "k", "v", true, "[s]\na=1\nk=v\nl=2\n"},
      {"much behind the change", "[s]\na=1\nk=1\n" + far, "k", "longer", true, "[s]\na=1\nk=longer\n" + far},
      {"an empty value", "[s]\na=1\nk=1\n", "k", "", true, "[s]\na=1\nk=\n"},
      {"case differs", "[s]\nK=1\n", "k", "v", true, "[s]\nK=1\nk=v\n"},
      {"only the first section", "[s]\na=1\n[s]\nk=1\n", "k", "v", true, "[s]\na=1\nk=v\n[s]\nk=1\n"},
      {"new key before the next header", "[s]\na=1\n\n[t]\n", "k", "v", true, "[s]\na=1\n\nk=v\n[t]\n"},
      {"new key in the last section", "[t]\n[s]\na=1\n", "k", "v", true, "[t]\n[s]\na=1\nk=v\n"},
      {"the last line lacks its line feed", "[s]\na=1", "k", "v", true, "[s]\na=1k=v\n"},
      {"a header that lacks it is none", "[s]", "k", "v", true, "[s]\n[s]\n\nk=v\n"},
      {"entry without line feed", "[s]\na=1\nk=1", "k", "v", true, "[s]\na=1\nk=v\n"},
      {"new section", "[t]\nk=1\n", "k", "v", true, "[t]\nk=1\n\n[s]\n\nk=v\n"},
      {"empty file", "", "k", "v", true, "\n[s]\n\nk=v\n"},
      {"blanks before a header", " [s]\nk=1\n", "k", "v", true, " [s]\nk=1\n\n[s]\n\nk=v\n"},
      {"a long line is two", "[s]\na=1\na=" + x1000 + std::string(21, '-') + "k=1\n", "k", "v", true,
       "[s]\na=1\na=" + x1000 + std::string(21, '-') + "k=v\n"},
      {"a zero byte ends its line", "[s]\na\0=\nk\0=1\n"s, "k", "v", true, "[s]\na\0=\nk\0=1\nk=v\n"s},

      {"remove an entry", "[s]\na=1\nk=1\nb=2\n", "k", nullptr, true, "[s]\na=1\nb=2\n"},
      {"remove the first entry", "[s]\nk=1\nb=2\n", "k", nullptr, true, "[s]\nb=2\n"},
      {"remove what is not there", "[s]\na=1\n[t]\nk=1\n", "k", nullptr, false, "[s]\na=1\n[t]\nk=1\n"},
      {"remove from the last section", "[s]\na=1\n", "k", nullptr, false, "[s]\na=1\n"},
      {"remove from a section that is not there", "[t]\nk=1\n", "k", nullptr, false, "[t]\nk=1\n"},

      {"remove a section", "[a]\n[s]\nk=1\n\n[b]\nk=2\n", nullptr, nullptr, true, "[a]\n[b]\nk=2\n"},
      {"the value does not matter then", "[s]\nk=1\n[b]\n", nullptr, "v", true, "[b]\n"},
      {"remove the last section", "[a]\nk=1\n[s]\nk=1\n\n", nullptr, nullptr, true, "[a]\nk=1\n"},
      {"remove a section that is not there", "[a]\n", nullptr, nullptr, false, "[a]\n"},
  };
  for (const WriteCase& row : rows) {
    const std::string path = directory.Write("x.ini", row.before);
    EXPECT_EQ(WritePrivateProfileString("s", row.key, row.value, path.c_str()), row.result) << row.what;
    EXPECT_EQ(directory.Read("x.ini"), row.after) << row.what;
  }
}

TEST(PrivateProfile, MakesMissingFiles) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("new.ini");
  EXPECT_TRUE(WritePrivateProfileString("s", "k", nullptr, path.c_str()));
  EXPECT_TRUE(WritePrivateProfileString("s", nullptr, "v", path.c_str()));
  EXPECT_FALSE(std::filesystem::exists(path));

  const mode_t mask = umask(0077);
  EXPECT_TRUE(WritePrivateProfileString("s", "k", "v", path.c_str()));
  umask(mask);
  EXPECT_EQ(directory.Read("new.ini"), "\n[s]\n\nk=v\n");
  struct stat status;
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0644U);

  chmod(path.c_str(), 0600);
  EXPECT_TRUE(WritePrivateProfileString("t", "k", "v", path.c_str()));
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);

  EXPECT_FALSE(WritePrivateProfileString("s", "k", "v", directory.File("no/folder.ini").c_str()));
}

TEST(PrivateProfile, TellsChangesAndMissingFiles) {
  const TraceLevel level(4);
  Trace().Take();
  const TemporaryDirectory directory;
  const std::string path = directory.Write("x.ini", "[s]\nk=1\n");
  const std::string missing = directory.File("missing.ini");
  const std::string folder = directory.File("no/folder.ini");
  char buffer[8];

  GetPrivateProfileString("s", "k", "", buffer, sizeof buffer, missing.c_str());
  EXPECT_EQ(Trace().Take(),
            std::vector<std::string>{"GetPrivateProfileString: Cannot open " + missing + "\n"});
  WritePrivateProfileString("s", "k", "v", path.c_str());
  EXPECT_EQ(Trace().Take(), (std::vector<std::string>{"WritePrivateProfileString(s, k, v, " + path + ")\n",
                                                      "WritePrivateProfileString rc=0x0001\n"}));
  WritePrivateProfileString("t", nullptr, nullptr, path.c_str());
  EXPECT_EQ(Trace().Take(),
            (std::vector<std::string>{"WritePrivateProfileString(t, <nil>, <nil>, " + path + ")\n",
                                      "WritePrivateProfileString rc=0x0000\n"}));
  WritePrivateProfileString("t", "k", nullptr, missing.c_str());
  EXPECT_EQ(Trace().Take(),
            std::vector<std::string>{"WritePrivateProfileString(t, k, <nil>, " + missing + ")\n"});
  WritePrivateProfileString("t", "k", "v", folder.c_str());
  EXPECT_EQ(Trace().Take(),
            (std::vector<std::string>{
                "WritePrivateProfileString(t, k, v, " + folder + ")\n",
                "WritePrivateProfileString: ## WARNING: append open error: " + folder + "\n"}));
  EXPECT_FALSE(CheckedWritePrivateProfileString(nullptr, "k", "v", path.c_str()));
  EXPECT_FALSE(CheckedWritePrivateProfileString("s", "k", "v", nullptr));
  EXPECT_EQ(Trace().Take(), (std::vector<std::string>{
                                "WritePrivateProfileString: ## WARNING: invalid pointer to AppName\n",
                                "WritePrivateProfileString: ## WARNING: invalid pointer to FileName\n"}));
}

}  // namespace
}  // namespace emstatus::test
