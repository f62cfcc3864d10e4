#include "platform/CRegistry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TraceCapture.h"
#include "tests/support/TraceLevel.h"

namespace emstatus::test {
namespace {

using Lines = std::vector<std::string>;

std::string TextOf(CRegistry& registry, const char* path, const char* name) {
  const auto value = registry.GetValue(registry.Open(HKEY_LOCAL_MACHINE, path), name);
  return value && value->Text() != nullptr ? *value->Text() : "<none>";
}

TEST(CRegistry, FallsBackToOlderFiles) {
  const char* const good[] = {"[HKEY_LOCAL_MACHINE]\nfrom=s=registry\n", "[HKEY_LOCAL_MACHINE]\nfrom=s=old\n",
                              "[HKEY_LOCAL_MACHINE]\nfrom=s=default\n"};
  const char* const names[] = {"registry", "registry.old", "registry.default"};
  for (std::size_t present = 0; present < 4; ++present) {
    const TemporaryDirectory directory;
    // What cannot be restored is empty, begins with an empty line, or is missing.
    if (present > 0) directory.Write(names[0], "");
    if (present > 1) directory.Write(names[1], "\n[HKEY_LOCAL_MACHINE]\n");
    if (present < 3) directory.Write(names[present], good[present]);
    const TraceLevel level(1);
    Trace().Take();
    CRegistry registry(directory.Path().string());
    EXPECT_EQ(registry.SetupTree(false), present < 3);
    const Lines all = {
        "CRegistry: WARNING: The length of \"" + directory.File(names[0]) + "\" is not sufficient\n",
        "CRegistry: WARNING: Could not restore tree from \"" + directory.File(names[0]) +
            "\", trying backup\n",
        "CRegistry: WARNING: Node restoring from \"" + directory.File(names[1]) +
            "\" failed - check the content of this file\n",
        "CRegistry: WARNING: Could not restore tree from \"" + directory.File(names[1]) +
            "\", trying default\n",
        "CRegistry: WARNING: Could not open \"" + directory.File(names[2]) + "\"\n",
        "CRegistry: ERROR: Could not restore tree from \"" + directory.File(names[2]) +
            "\", restoring failed\n",
    };
    EXPECT_EQ(Trace().Take(), Lines(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(2 * present)));
    const char* const expected[] = {"registry", "old", "default", "<none>"};
    EXPECT_EQ(TextOf(registry, "", "from"), expected[present]);
    EXPECT_NE(registry.Open(HKEY_CURRENT_CONFIG, ""), kNoRegistryKey);
  }
}

TEST(CRegistry, WithoutADirectoryItLivesInMemory) {
  const TraceLevel level(1);
  Trace().Take();
  CRegistry registry("");
  EXPECT_TRUE(registry.SetValue(registry.CreateKey(HKEY_USERS, "a"), "v", RegistryValue::Dword(1)));
  EXPECT_TRUE(Holds(Trace().Take(), "CRegistry: ERROR: Empty file path"));
  EXPECT_FALSE(registry.SaveTree());
  EXPECT_EQ(Trace().Take(), Lines{"CRegistry: ERROR: Cannot open \"\" for writing\n"});
}

TEST(CRegistry, SavesAndKeepsThePreviousFile) {
  const TemporaryDirectory directory;
  directory.Write("registry", "");
  directory.Write("registry.old", "[before]\n");
  CRegistry registry(directory.Path().string());
  EXPECT_FALSE(registry.SaveTree()) << "there is no tree yet";
  registry.InitClass();
  const TraceLevel level(2);
  Trace().Take();
  ASSERT_TRUE(registry.SaveTree());
  EXPECT_EQ(Trace().Take(), Lines{"\nCRegistry::SaveTree MPRegistryTemp[" + directory.File("registry.new") +
                                  "] \t MPRegistry[" + directory.File("registry") + "]"});
  EXPECT_EQ(directory.Read("registry.old"), "[before]\n") << "an empty file is not kept";
  const std::string first = directory.Read("registry");
  EXPECT_NE(first.find("[5E0D2A47-93C1-4B8E-A6F2-1D7C3B9E8F40]\n\n"), std::string::npos);

  chmod(directory.File("registry").c_str(), 0600);
  const RegistryHandle key = registry.CreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Vendor");
  ASSERT_TRUE(registry.SetValue(key, "v", RegistryValue::Binary({0x0A, 0xFF})));
  ASSERT_TRUE(registry.SaveTree());
  EXPECT_EQ(directory.Read("registry.old"), first);
  EXPECT_FALSE(std::filesystem::exists(directory.File("registry.new")));
  struct stat status;
  ASSERT_EQ(stat(directory.File("registry").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0644U);

  CRegistry again(directory.Path().string());
  EXPECT_EQ(again.GetValue(again.Open(HKEY_LOCAL_MACHINE, "SOFTWARE\\Vendor"), "v"),
            RegistryValue::Binary({0x0A, 0xFF}));
}

TEST(CRegistry, SetsUpOnceUnlessForced) {
  const TemporaryDirectory directory;
  directory.Write("registry", "[HKEY_LOCAL_MACHINE]\nv=s=1\n");
  CRegistry registry(directory.Path().string());
  EXPECT_EQ(TextOf(registry, "", "v"), "1");
  registry.SetValue(HKEY_LOCAL_MACHINE, "v", RegistryValue::String("changed"));
  registry.SetValue(HKEY_LOCAL_MACHINE, "unsaved", RegistryValue::String("x"));
  directory.Write("registry", "[HKEY_LOCAL_MACHINE]\nv=s=2\n");
  const TraceLevel level(2);
  Trace().Take();
  EXPECT_TRUE(registry.SetupTree(false));
  EXPECT_EQ(Trace().Take(), Lines{"CRegistry: SetupTree(): ForceSetup=0, MIsSetup=1, MIsDirty=1\n"});
  EXPECT_EQ(TextOf(registry, "", "v"), "changed");
  EXPECT_TRUE(registry.SetupTree(true));
  EXPECT_EQ(TextOf(registry, "", "v"), "2");
  EXPECT_EQ(TextOf(registry, "", "unsaved"), "<none>");
  directory.Write("registry", "");
  EXPECT_FALSE(registry.SetupTree(true));
  EXPECT_EQ(TextOf(registry, "", "v"), "2") << "a failed restore keeps the tree";
  Trace().Take();
  registry.InitClass();
  EXPECT_EQ(Trace().Take(),
            (Lines{"\nCRegistry::InitClass", "CRegistry::InitClass() : re-initialize the registry-tree\n"}));
  EXPECT_EQ(TextOf(registry, "", "v"), "<none>");
}

TEST(CRegistry, OpensMakesAndDeletesKeys) {
  CRegistry registry("");
  registry.InitClass();
  EXPECT_EQ(registry.Open(HKEY_USERS, "a"), kNoRegistryKey);
  const RegistryHandle deep = registry.CreateKey(HKEY_USERS, "a\\b\\c");
  const RegistryHandle middle = registry.Open(HKEY_USERS, "\\a\\\\b\\");
  EXPECT_EQ(registry.Open(middle, "c"), deep);
  EXPECT_EQ(registry.Open(HKEY_USERS, "A"), kNoRegistryKey);
  EXPECT_NE(registry.OpenPointer(middle, "c"), nullptr);
  EXPECT_TRUE(registry.SetValue(deep, "v", RegistryValue::Dword(1)));

  std::string tooDeep;
  for (int depth = 0; depth < 64; ++depth) tooDeep += "k\\";
  for (const std::string& name : {std::string("a]"), std::string("a\nb"), std::string(1021, 'x'), tooDeep}) {
    EXPECT_EQ(registry.CreateKey(HKEY_USERS, name.c_str()), kNoRegistryKey) << name;
  }
  for (const RegistryHandle none : {kNoRegistryKey, -1, 9999}) {
    EXPECT_EQ(registry.Open(none, "a"), kNoRegistryKey);
    EXPECT_EQ(registry.CreateKey(none, "a"), kNoRegistryKey);
    EXPECT_FALSE(registry.SetValue(none, "v", RegistryValue::Dword(1)));
    EXPECT_FALSE(registry.DeleteKey(none, "a"));
  }

  const TraceLevel level(2);
  Trace().Take();
  EXPECT_FALSE(registry.DeleteKey(HKEY_USERS, ""));
  EXPECT_FALSE(registry.DeleteKey(HKEY_USERS, "b"));
  Trace().Take();
  EXPECT_TRUE(registry.DeleteKey(HKEY_USERS, "a"));
  EXPECT_EQ(Trace().Take(),
            (Lines{"CRegistry::DeleteKey \"a\"\n", "CRegistryNode::deleteNode \"c\"\n",
                   "CRegistryNode::deleteNode \"b\"\n", "CRegistryNode::deleteNode \"a\"\n"}));
  EXPECT_FALSE(registry.GetValue(deep, "v"));
  EXPECT_EQ(registry.Open(HKEY_USERS, "a\\b"), kNoRegistryKey);
  EXPECT_EQ(Trace().Take(), (Lines{"\nCRegistry::Open \"a\\b\", hKey = 3\n",
                                   "\nCRegistry::Open ##ERROR while opening !!!\n"}));
  EXPECT_EQ(registry.CreateKey(HKEY_USERS, "a\\b\\c"), deep);
  EXPECT_FALSE(registry.GetValue(deep, "v"));
}

TEST(CRegistry, RefusesValuesThatTheFileCannotHold) {
  CRegistry registry("");
  const struct {
    const char* name;
    RegistryValue value;
    bool result;
  } rows[] = {
      {"a=b", RegistryValue::Dword(1), false},
      {"a\nb", RegistryValue::Dword(1), false},
      {"[a", RegistryValue::String("b]"), false},
      {"[a", RegistryValue::String("b"), true},
      {"a", RegistryValue::String("1\n2"), false},
      {"a", RegistryValue::String(std::string("1\0002", 3)), false},
      {"a", RegistryValue::String(std::string(1018, 'x')), true},
      {"a", RegistryValue::String(std::string(1019, 'x')), false},
      {"a", RegistryValue::Binary(RegistryValue::Bytes(339)), true},
      {"a", RegistryValue::Binary(RegistryValue::Bytes(340)), false},
      {"a", RegistryValue::WithoutData(RegistryType::kString), true},
      {"a", RegistryValue::WithoutData(RegistryType::kKey), false},
  };
  for (const auto& row : rows)
    EXPECT_EQ(registry.SetValue(HKEY_USERS, row.name, row.value), row.result) << row.name;
}

TEST(CRegistry, QueriesValues) {
  CRegistry registry("");
  registry.SetValue(HKEY_USERS, "text", RegistryValue::ExpandableString("abc"));
  registry.SetValue(HKEY_USERS, "number", RegistryValue::Dword(-2));
  registry.SetValue(HKEY_USERS, "binary", RegistryValue::Binary({1, 2, 3}));
  registry.SetValue(HKEY_USERS, "nothing", RegistryValue::WithoutData(RegistryType::kString));
  char room[5] = "####";
  RegistryType type{};
  std::uint32_t count = 0;
  EXPECT_TRUE(registry.QueryValue(HKEY_USERS, "text", &type, nullptr, &count));
  EXPECT_EQ(type, RegistryType::kExpandableString);
  EXPECT_EQ(count, 4U);
  count = 3;
  EXPECT_FALSE(registry.QueryValue(HKEY_USERS, "text", nullptr, room, &count));
  EXPECT_EQ(count, 4U);
  EXPECT_STREQ(room, "####");
  EXPECT_TRUE(registry.QueryValue(HKEY_USERS, "text", nullptr, room, &count));
  EXPECT_STREQ(room, "abc");
  std::int32_t number = 0;
  EXPECT_TRUE(registry.QueryValue(HKEY_USERS, "number", &type, &number, &count));
  EXPECT_EQ(number, -2);
  EXPECT_TRUE(registry.QueryValue(HKEY_USERS, "binary", &type, room, &count));
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(room[2], 3);
  EXPECT_TRUE(registry.QueryValue(HKEY_USERS, "nothing", &type, nullptr, &count));
  EXPECT_EQ(count, 0U);

  const TraceLevel level(4);
  Trace().Take();
  EXPECT_FALSE(registry.QueryValue(HKEY_USERS, "missing", &type, nullptr, &count));
  EXPECT_FALSE(registry.QueryValue(HKEY_USERS, "text", &type, nullptr, nullptr));
  registry.GetValue(HKEY_USERS, "text");
  EXPECT_EQ(Trace().Take(), (Lines{"CRegistry::GetValue \"missing\" --> len 0\n",
                                   "CRegistry::QueryValue: ** ERROR **  pdwCount is a NULL pointer\n",
                                   "CRegistry::GetValue \"text\" --> len 4\n"}));
  EXPECT_TRUE(registry.DeleteValue(HKEY_USERS, "text"));
  EXPECT_FALSE(registry.DeleteValue(HKEY_USERS, "text"));
}

TEST(CRegistry, IsSharedByThreads) {
  const TemporaryDirectory directory;
  CRegistry registry(directory.Path().string());
  registry.CreateKey(HKEY_USERS, "a");
  const auto work = [&registry](const char* name) {
    for (int round = 0; round < 50; ++round) {
      const RegistryHandle key = registry.CreateKey(HKEY_USERS, "a");
      registry.SetValue(key, name, RegistryValue::Dword(round));
      if (const auto node = registry.OpenPointer(HKEY_USERS, "a"))
        node->SetValue(name, RegistryValue::Dword(-1));
      registry.DeleteKey(HKEY_USERS, "a");
    }
    registry.SaveTree();
  };
  std::thread other(work, "one");
  work("two");
  other.join();
  EXPECT_TRUE(registry.SetupTree(true));
}

}  // namespace
}  // namespace emstatus::test
