#include "host/providers/LinuxProviders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "tests/host/providers/MachineFolder.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

using namespace host;

TEST(LinuxProviders, OfACopyOnlyWhatItHolds) {
  TemporaryDirectory copy;
  LinuxOptions options;
  options.root = copy.Path().string();
  options.requiredProcesses = {"p"};
  std::set<std::string_view> names;
  auto providers = MakeLinuxProviders(options);
  for (const auto& provider : providers) {
    EXPECT_TRUE(names.insert(provider->Name()).second) << provider->Name();
    EXPECT_GT(provider->LateAfter(), provider->Interval()) << provider->Name();
    EXPECT_TRUE(ReadAt(*provider, 0).empty()) << provider->Name();
  }
  copy.Write("proc/meminfo", "MemTotal: 100 kB\nMemAvailable: 60 kB\n");
  copy.Write("proc/self/mountinfo", "22 1 8:1 / / rw - ext4 /dev/sda1 rw\n");
  copy.Write("proc/7/stat", "7 (p) S 1 7 7 0 -1\n");
  providers = MakeLinuxProviders(options);
  EXPECT_EQ(providers.size(), names.size() + 3);
  Texts lines;
  for (const auto& provider : providers) {
    if (!names.contains(provider->Name())) {
      std::ranges::copy(Lines(ReadAt(*provider, 0)), std::back_inserter(lines));
    }
  }
  EXPECT_EQ(lines, (Texts{"memory good 40.0 %", "/ good", "/ inactive: a copy of a machine does not tell it",
                          "p good"}));
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
