#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/providers/KernelText.h"
#include "host/providers/LinuxProviders.h"
#include "host/providers/ValueText.h"
#include "tests/host/providers/MachineText.h"

namespace emstatus::test {
namespace {

using namespace host;

std::string FileText(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << "cannot read " << path;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// "class name | id state [value] [: reason]", a line for each object, under the names of their providers.
std::string Everything(const std::vector<std::unique_ptr<Provider>>& providers, double seconds) {
  std::string text;
  for (const auto& provider : providers) {
    text += std::string(provider->Name()) + "\n";
    for (const Reading& reading : ReadAt(*provider, seconds)) {
      text += Format("  %04x ", unsigned(reading.objectClass)) + reading.name + " | " + Line(reading);
      if (reading.redundancy) {
        const Redundancy& group = *reading.redundancy;
        text +=
            Format(" [%u of %u, %u needed, ", group.present, group.members, group.needed) + group.group + "]";
      }
      text += "\n";
    }
  }
  return text;
}

// The whole list is compared: a part that is told twice, or not at all, fails as well as a wrong state. When
// the change is meant, the new list is in what the failure names.
TEST(WholeServer, EveryPartOnceWithItsState) {
  const std::filesystem::path folder = std::filesystem::path(EM_SOURCE_DIR) / "tests/data/machines";
  MachineFolder machine(ParseMachine(FileText(folder / "server.txt")));
  LinuxOptions options;
  options.root = machine.Path();
  const auto providers = MakeLinuxProviders(options);
  const std::string expected = FileText(folder / "server.expect");
  std::string told = Everything(providers, 0);
  // A machine that is busy with other tests may let a device be late.
  for (int tries = 1; tries < 10 && told != expected; ++tries) {
    told = Everything(providers, 60.0 * tries);
  }
  if (told != expected) {
    const std::string actual = testing::TempDir() + "server.actual";
    std::ofstream(actual, std::ios::binary) << told;
    ADD_FAILURE() << "the list is another one: compare server.expect with " << actual;
    const auto wanted = host::Lines(expected);
    for (const std::string_view line : host::Lines(told)) {
      EXPECT_EQ(std::ranges::count(wanted, line), 1) << "too much: " << line;
    }
    const auto found = host::Lines(told);
    for (const std::string_view line : wanted) {
      EXPECT_EQ(std::ranges::count(found, line), 1) << "missing: " << line;
    }
  }
}

TEST(MachineText, WhatIsNeitherFileNorLinkIsNamed) {
  for (const char* text : {"name = x", "/sys/\nname = x", "/sys/\n  name", "/sys"}) {
    EXPECT_THROW(ParseMachine(text), std::runtime_error) << text;
  }
}

}  // namespace
}  // namespace emstatus::test
