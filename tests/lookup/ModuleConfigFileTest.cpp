#include "lookup/ModuleConfigFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TraceCapture.h"
#include "tests/support/TraceLevel.h"

namespace emstatus::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr char kUuid[] = "SYSTEM\\CurrentControlSet\\Control\\UUID\\5E0D2A47-93C1-4B8E-A6F2-1D7C3B9E8F40";
constexpr char kDefaultKey[] = "SOFTWARE\\Orvanex\\Management\\Host Warden";

/// A host's installation in a folder of its own, with "cwd" as the current directory.
class ModuleConfigFileTest : public testing::Test {
 protected:
  ModuleConfigFileTest() : before_(fs::current_path()) {
    for (const char* name : {"cwd", "data", "bin"}) fs::create_directory(directory_.File(name));
    fs::current_path(directory_.File("cwd"));
  }
  ~ModuleConfigFileTest() override { fs::current_path(before_); }

  void Set(const std::string& key, const char* name, RegistryValue value) {
    registry_.SetValue(registry_.CreateKey(HKEY_LOCAL_MACHINE, key.c_str()), name, std::move(value));
  }

  void Install(const std::string& hostKey) {
    Set(hostKey + "\\DATA", "DataRoot", RegistryValue::String(directory_.File("data")));
    Set(hostKey + "\\Setup", "BinRoot", RegistryValue::String(directory_.File("bin/install")));
  }

  /// Where the file was found, without this test's folder; the lines of the look-up itself go to `lines_`.
  std::string Find() {
    const TraceLevel level(3);
    Trace().Take();
    std::string path = "unchanged";
    const bool found = ModuleConfigFile(registry_).GetModuleConfigFile("EM_STATUS", path, "ini");
    lines_ = Trace().Take();
    std::erase_if(lines_,
                  [](const std::string& line) { return line.find("CRegistry") != std::string::npos; });
    return found ? fs::relative(path, directory_.Path()).string() : path;
  }

  const TemporaryDirectory directory_;
  CRegistry registry_{directory_.Path().string()};
  Lines lines_;

 private:
  const fs::path before_;
};

TEST_F(ModuleConfigFileTest, LooksInThreeDirectoriesInOrder) {
  Install(kDefaultKey);
  for (const char* name : {"cwd", "data", "bin"}) directory_.Write(std::string(name) + "/EM_STATUS.ini", "");
  EXPECT_EQ(Find(), "cwd/EM_STATUS.ini");
  fs::remove(directory_.File("cwd/EM_STATUS.ini"));
  EXPECT_EQ(Find(), "data/EM_STATUS.ini");
  fs::remove(directory_.File("data/EM_STATUS.ini"));
  EXPECT_EQ(Find(), "bin/EM_STATUS.ini");
  EXPECT_EQ(
      lines_,
      (Lines{"\nModuleConfigFile    : GetModuleConfigFile: \"EM_STATUS.ini\"",
             "\nModuleConfigFile    : Extension module config file requested: \"EM_STATUS.ini\"",
             "\nCExtensionModule    : Check for config file in current directory " + directory_.File("cwd") +
                 "...",
             "\nModuleConfigFile    : Check for config file in Hostwarden/qmcd data root " +
                 directory_.File("data") + "...",
             "\nModuleConfigFile    : Check for config file in Hostwarden/qmcd binary path " +
                 directory_.File("bin") + "...",
             "\nModuleConfigFile    : Config file path: \"" + directory_.File("bin/EM_STATUS.ini") + "\""}));
  fs::remove(directory_.File("bin/EM_STATUS.ini"));
  EXPECT_EQ(Find(), "unchanged");
  EXPECT_EQ(lines_.back(),
            "\nModuleConfigFile    : ## ERROR! Module specific config file EM_STATUS.ini not found!");
}

TEST_F(ModuleConfigFileTest, WithoutRegistryOnlyTheCurrentDirectoryCounts) {
  directory_.Write("data/EM_STATUS.ini", "");
  EXPECT_EQ(Find(), "unchanged");
  EXPECT_TRUE(Holds(lines_, "\nModuleConfigFile    : Could not find data root directory"));
  EXPECT_TRUE(Holds(lines_, "\nModuleConfigFile    : Could not find the Hostwarden binary path"));
  directory_.Write("cwd/EM_STATUS.ini", "");
  EXPECT_EQ(Find(), "cwd/EM_STATUS.ini");
}

TEST_F(ModuleConfigFileTest, TheHostNamesItsKey) {
  directory_.Write("data/EM_STATUS.ini", "");
  Install("SOFTWARE\\Other\\Host");
  EXPECT_EQ(Find(), "unchanged");
  Set(kUuid, "Host Warden", RegistryValue::String("SOFTWARE\\Other\\Host"));
  EXPECT_EQ(Find(), "data/EM_STATUS.ini");
  Set(kUuid, "Host Warden", RegistryValue::Dword(1));
  EXPECT_EQ(Find(), "unchanged") << "a number names no key";
  Install(kDefaultKey);
  EXPECT_EQ(Find(), "data/EM_STATUS.ini");
}

TEST_F(ModuleConfigFileTest, RootsThatNameNoDirectoryAreSkipped) {
  const std::string data = std::string(kDefaultKey) + "\\DATA";
  const std::string setup = std::string(kDefaultKey) + "\\Setup";
  directory_.Write("bin/EM_STATUS.ini", "");
  Set(data, "DataRoot", RegistryValue::String(""));
  const struct {
    std::string root;
    const char* found;
  } rows[] = {
      {directory_.File("bin") + "/", "bin/EM_STATUS.ini"},
      {directory_.File("bin"), "unchanged"},
      {"bin", "unchanged"},
      {"", "unchanged"},
  };
  for (const auto& row : rows) {
    Set(setup, "BinRoot", RegistryValue::String(row.root));
    EXPECT_EQ(Find(), row.found) << row.root;
    EXPECT_TRUE(Holds(lines_, "\nModuleConfigFile    : Could not find data root directory"));
  }
}

TEST_F(ModuleConfigFileTest, GoesOnWithoutACurrentDirectory) {
  Install(kDefaultKey);
  directory_.Write("data/EM_STATUS.ini", "");
  fs::remove(directory_.File("cwd"));
  EXPECT_EQ(Find(), "data/EM_STATUS.ini");
  EXPECT_TRUE(Holds(lines_, "\nModuleConfigFile    : ## ERROR 0x2! GetCurrentDir() FAILED!"));
}

TEST_F(ModuleConfigFileTest, KeepsPropertiesInTheRegistry) {
  Set(std::string(kDefaultKey) + "\\EM_STATUS", "Name", RegistryValue::String("a b"));
  const TraceLevel level(3);
  ModuleConfigFile file(registry_);
  std::string text = "unchanged";
  std::int32_t number = 7;
  EXPECT_FALSE(file.GetModuleProperty("EM_STATUS", "Rate", number));
  EXPECT_FALSE(file.GetModuleProperty("EM_STATUS", "Rate", text));
  EXPECT_TRUE(file.SetModuleProperty("EM_STATUS", "Rate", -1));
  EXPECT_FALSE(file.GetModuleProperty("EM_STATUS", "Name", number));
  EXPECT_EQ(number, 7);
  EXPECT_EQ(text, "unchanged");
  Trace().Take();

  CRegistry later(directory_.Path().string());
  ModuleConfigFile again(later);
  EXPECT_TRUE(again.GetModuleProperty("EM_STATUS", "Rate", number));
  EXPECT_TRUE(again.GetModuleProperty("EM_STATUS", "Name", text));
  EXPECT_EQ(number, -1);
  EXPECT_EQ(text, "a b");
  CRegistry unsaved(directory_.File("missing"));
  EXPECT_FALSE(ModuleConfigFile(unsaved).SetModuleProperty("EM_STATUS", "Rate", 255));
  const Lines lines = Trace().Take();
  EXPECT_TRUE(Holds(lines, "\nEM_STATUS           : Read module property \"Rate\" = -1 (0xFFFFFFFF)"));
  EXPECT_TRUE(Holds(lines, "\nEM_STATUS           : Read module property \"Name\" = \"a b\""));
  EXPECT_TRUE(Holds(lines, "\nEM_STATUS           : Write module property \"Rate\" = 255 (FAILED)"));
}

}  // namespace
}  // namespace emstatus::test
