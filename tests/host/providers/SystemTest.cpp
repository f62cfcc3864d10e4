#include <gtest/gtest.h>

#include <cerrno>

#include "host/providers/MemoryProvider.h"
#include "host/providers/PressureProvider.h"
#include "host/providers/ProcessProvider.h"
#include "host/providers/ProcessorProvider.h"
#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;

TEST(Memory, MemoryAndSwapInUse) {
  const struct {
    const char* text;
    std::vector<std::string> lines;
  } rows[] = {
      {"MemTotal: 1000 kB\nMemAvailable: 600 kB\nSwapTotal: 0 kB\nSwapFree: 0 kB\n", {"memory good 40.0 %"}},
      {"MemTotal: 1000 kB\nMemFree: 10 kB\nBuffers: 20 kB\nCached: 50 kB\nSwapTotal: 100 kB\nSwapFree: 10 kB",
       {"memory warning 92.0 %: 92.0 % used, less than 90 % expected; 80.0 KiB left",
        "swap warning 90.0 %: 90.0 % used, less than 80 % expected; 10.0 KiB left"}},
      {"MemTotal: 1000 kB\nMemAvailable: 30 kB\nSwapTotal: 8 kB\nSwapFree: 8 kB",
       {"memory critical 97.0 %: 97.0 % used, less than 90 % expected; 30.0 KiB left", "swap good 0.0 %"}},
      {"MemTotal: 1000 kB\nMemAvailable: 900 kB\nHardwareCorrupted: 4 kB",
       {"memory warning 10.0 %: 4.0 KiB taken out of use after hardware errors, 0 B expected"}},
      {"MemTotal: 1000 kB\nMemAvailable: 2000 kB\n", {"memory good 0.0 %"}},
  };
  for (const auto& row : rows) {
    MachineFolder machine("/proc/meminfo", row.text);
    MemoryProvider provider(machine.Files());
    EXPECT_EQ(Lines(ReadAt(provider, 0)), row.lines) << row.text;
  }
  MachineFolder empty("/proc/meminfo", "MemTotal: x kB");
  MemoryProvider provider(empty.Files());
  EXPECT_THROW(ReadAt(provider, 0), std::runtime_error);
}

TEST(Pressure, AWarningAtMost) {
  MachineFolder machine;
  PressureProvider provider(machine.Files());
  EXPECT_TRUE(ReadAt(provider, 0).empty()) << "a kernel without it";
  machine.Write({{"/proc/pressure/cpu", "some avg10=0.00 avg60=99.50 avg300=0.00 total=1\n"},
                 {"/proc/pressure/memory",
                  "some avg10=0 avg60=80.00 avg300=0 total=1\nfull avg10=0 avg60=10.00 avg300=0 total=1\n"},
                 {"/proc/pressure/io", "some avg10=0 avg60=1 avg300=0 total=1\nfull avg10=0 avg60=x\n"}});
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"cpu good 99.5 %",
                   "memory warning 10.0 %: all work waited for 10.0 % of the last minute, less than 10 % "
                   "expected",
                   "io implausible: no share of the last minute between 0 and 100 % is told"}));
  for (const char* resource : {"cpu", "memory", "io"}) {
    machine.Fail(std::string("/proc/pressure/") + resource, EOPNOTSUPP);
  }
  EXPECT_TRUE(ReadAt(provider, 5).empty()) << "switched off at boot";
}

MachineFolder::FileTable Cpu(int number, int package, int sibling, const char* core, const char* whole) {
  const std::string folder = "/sys/devices/system/cpu/cpu" + std::to_string(number);
  return {{folder + "/topology/physical_package_id", std::to_string(package)},
          {folder + "/topology/thread_siblings_list", std::to_string(sibling)},
          {folder + "/thermal_throttle/core_throttle_count", core},
          {folder + "/thermal_throttle/package_throttle_count", whole}};
}

TEST(Processors, OnlineAndThrottled) {
  MachineFolder machine(
      {{"/sys/devices/system/cpu/present", "0-4\n"}, {"/sys/devices/system/cpu/online", "0-3\n"}});
  machine.Write(Cpu(0, 0, 0, "5", "10"));
  machine.Write(Cpu(1, 0, 0, "4", "9"));
  machine.Write(Cpu(2, 1, 2, "0", "0"));
  machine.Write(Cpu(3, 1, 3, "0", "0"));
  ProcessorProvider provider(machine.Files());
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"package0 good 2: 1 more logical processors of the machine are switched off",
                   "package0 good 0", "package1 good 2", "package1 good 0"}))
      << "what was counted before is no news";
  machine.Write(Cpu(0, 0, 0, "7", "11"));
  machine.Write({{"/sys/devices/system/cpu/online", "0-2\n"}});
  EXPECT_EQ(
      Lines(ReadAt(provider, 10)),
      (Texts{"package0 good 2: 1 more logical processors of the machine are switched off",
             "package0 warning 3: slowed down by heat 3 times in the last 5 min, 0 expected",
             "package1 warning 1: 1 of 2 logical processors online; went offline: 3", "package1 good 0"}));
  machine.Write({{"/sys/devices/system/cpu/online", "0-3\n"}});
  EXPECT_EQ(Line(ReadAt(provider, 309)[1]),
            "package0 warning 3: slowed down by heat 3 times in the last 5 min, 0 expected");
  EXPECT_EQ(Lines(ReadAt(provider, 310)),
            (Texts{"package0 good 2: 1 more logical processors of the machine are switched off",
                   "package0 good 0", "package1 good 2", "package1 good 0"}));
}

TEST(Processors, ByIntentByFaultAndBackAgain) {
  MachineFolder machine({{"/sys/devices/system/cpu/present", "0-3"},
                         {"/sys/devices/system/cpu/online", "0-3"},
                         {"/sys/devices/system/cpu/smt/control", "on"}});
  machine.Write(Cpu(0, 0, 0, "5", "10"));
  machine.Write(Cpu(1, 0, 1, "500", "10"));
  machine.Write(Cpu(2, 0, 0, "5", "10"));
  machine.Write(Cpu(3, 0, 1, "500", "10"));
  ProcessorProvider provider(machine.Files());
  EXPECT_EQ(Lines(ReadAt(provider, 0)), (Texts{"package0 good 4", "package0 good 0"}));
  const struct {
    const char* online;
    const char* present;
    const char* threads;
    const char* line;
    const char* throttle;
  } rows[] = {
      {"0-1", "0-3", "off", "package0 good 2: 2 of 4 logical processors online, the others are switched off",
       "package0 good 0"},
      {"0,2", "0-3", "on", "package0 warning 2: 2 of 4 logical processors online; went offline: 1, 3",
       "package0 good 0"},
      {"0-3", "0-3", "on", "package0 good 4", "package0 good 0"},
      {"0-2", "0-2", "on", "package0 warning 3: 3 of 4 logical processors online; went offline: 3",
       "package0 good 0"},
      {"", "0-3", "on", "package0 critical 0: 0 of 4 logical processors online; went offline: 0, 1, 2, 3",
       "package0 inactive: not counted while none of its logical processors is online"},
      {"0-3", "0-3", "on", "package0 good 4", "package0 good 0"},
  };
  for (const auto& row : rows) {
    machine.Write({{"/sys/devices/system/cpu/present", row.present},
                   {"/sys/devices/system/cpu/online", row.online},
                   {"/sys/devices/system/cpu/smt/control", row.threads}});
    EXPECT_EQ(Lines(ReadAt(provider, 10)), (Texts{row.line, row.throttle}));
  }
}

TEST(Processors, VirtualMachinesTellLess) {
  MachineFolder machine({{"/sys/devices/system/cpu/online", "0-1\n"},
                         {"/sys/devices/system/cpu/cpu0/topology/physical_package_id", "-1"}});
  ProcessorProvider provider(machine.Files());
  EXPECT_EQ(Lines(ReadAt(provider, 0)), (Texts{"package0 good 2"}));
  MachineFolder none;
  ProcessorProvider nothing(none.Files());
  EXPECT_TRUE(ReadAt(nothing, 0).empty());
}

TEST(Processes, NamesStatesAndWhatIsHidden) {
  const std::string rest = " 1 1 1 0 -1";
  MachineFolder machine({{"/proc/1/stat", "1 (systemd) S" + rest},
                         {"/proc/7/stat", "7 (a b) (c)) R" + rest},
                         {"/proc/8/stat", "8 (gone) Z" + rest},
                         {"/proc/9/stat", "9 (halted) T" + rest},
                         {"/proc/10/stat", "10 (averylongprogra) S" + rest},
                         {"/proc/11/stat", "11 (anotherlongprog) S" + rest},
                         {"/proc/12/stat", "12 (gone) Z" + rest},
                         {"/proc/self/stat", "99 (phantom) S" + rest},
                         {"/proc/13/stat", "13 (MainThread) S" + rest},
                         {"/proc/13/exe", "-> /usr/bin/service"},
                         {"/proc/10/exe", "-> /usr/bin/averylongprogram"},
                         {"/proc/11/exe", "-> /usr/bin/anotherlongprogram2"}});
  ProcessProvider provider(machine.Files(), {"systemd", "a b) (c)", "gone", "halted", "averylongprogram",
                                             "anotherlongprogram1", "phantom", "service", "service"});
  const std::string none = ": no process of it runs, at least 1 expected";
  EXPECT_EQ(Lines(ReadAt(provider, 0)),
            (Texts{"systemd good", "a b) (c) good",
                   "gone critical: its process has ended and waits for its parent, 1 running expected",
                   "halted warning: its process 9 was stopped by a signal, running expected",
                   "averylongprogram good", "anotherlongprogram1 critical" + none, "phantom critical" + none,
                   "service good"}));
  machine.Write({{"/proc/20/stat", "20 (gone) S" + rest}});
  machine.Remove("/proc/7");
  const auto lines = Lines(ReadAt(provider, 5));
  EXPECT_EQ(lines[1], "a b) (c) critical" + none);
  EXPECT_EQ(lines[2], "gone good");
  machine.Fail("/proc/1/stat", EPERM);
  EXPECT_EQ(Line(ReadAt(provider, 10)[6]),
            "phantom late: not seen, but the processes of other users are hidden from emhost");
}

}  // namespace
}  // namespace emstatus::test
