#include "host/providers/LinuxProviders.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/host/providers/MachineFolder.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

using namespace host;

TEST(LinuxProviders, AMachineThatHasNothingTellsNothing) {
  TemporaryDirectory empty;
  LinuxOptions options;
  options.sysRoot = empty.File("sys");
  options.procRoot = empty.File("proc");
  std::set<std::string_view> names;
  for (const auto& provider : MakeLinuxProviders(options)) {
    EXPECT_TRUE(names.insert(provider->Name()).second) << provider->Name();
    EXPECT_GT(provider->LateAfter(), provider->Interval()) << provider->Name();
    // What every Linux has: that it cannot be read is not the absence of a device.
    if (provider->Name() == "memory" || provider->Name() == "filesystems") {
      EXPECT_THROW(ReadAt(*provider, 0), std::exception) << provider->Name();
    } else {
      EXPECT_TRUE(ReadAt(*provider, 0).empty()) << provider->Name();
    }
  }
  EXPECT_GE(names.size(), 13u);
}

TEST(LinuxProviders, ThisMachineIsReadTwiceAlike) {
  LinuxOptions options;
  options.requiredProcesses = {"no such program"};
  for (const auto& provider : MakeLinuxProviders(options)) {
    if (provider->Name() == "systemd units") {
      continue;
    }
    std::vector<std::string> identities[2];
    for (auto& round : identities) {
      for (const Reading& reading : ReadAt(*provider, 0)) {
        round.push_back(std::to_string(int(reading.objectClass)) + reading.id);
      }
    }
    EXPECT_EQ(identities[0], identities[1]) << provider->Name();
    EXPECT_EQ(std::set(identities[0].begin(), identities[0].end()).size(), identities[0].size())
        << "two objects under one id: " << provider->Name();
  }
}

}  // namespace
}  // namespace emstatus::test
