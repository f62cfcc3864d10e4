#include "process/ProcessTable.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

namespace fs = std::filesystem;
using Pids = std::vector<pid_t>;

std::string StatusText(const std::string& name, const std::string& rest = "") {
  return std::string("\nName:\t")
      .append(name)
      .append("\nUmask:\t0022\nState:\tS (sleeping)\nTgid:\t7\nPid:\t7\nPPid:\t1\nUid:\t1000\t0\t0\t0\n")
      .append(rest);
}

TEST(ProcessStatus, ReadsTheKernelsText) {
  const auto status =
      ParseProcessStatus(StatusText("a (b) c:\\n\\\\n\\x", "VmHWM:\t  9 kB\nVmRSS:\t    1234 kB\n"));
  ASSERT_TRUE(status);
  EXPECT_EQ(status->name, "a (b) c:\n\\n\\x");
  EXPECT_EQ(status->pid, 7);
  EXPECT_EQ(status->parent, 1);
  EXPECT_EQ(status->state, 'S');
  EXPECT_EQ(status->realUser, 1000U);
  EXPECT_EQ(status->effectiveUser, 0U);
  EXPECT_EQ(status->residentKib, 1234U);
  EXPECT_FALSE(ParseProcessStatus(StatusText("kthreadd"))->residentKib);
  EXPECT_EQ(ParseProcessStatus(StatusText(""))->name, "");

  for (const char* line : {"\nName:", "\nState:", "\nPid:", "\nPPid:", "\nUid:"}) {
    std::string text = StatusText("x");
    text[text.find(line) + 1] = '#';
    EXPECT_FALSE(ParseProcessStatus(text)) << text;
  }
  EXPECT_FALSE(ParseProcessStatus("Name:\tx\nState:\tS\nPid:\tx\nPPid:\t1\nUid:\t0\t0\n"));
  EXPECT_FALSE(ParseProcessStatus("Name:\tx\nState:\tS\nPid:\t1\nPPid:\t1\nUid:\t0\n"));
  EXPECT_FALSE(ParseProcessStatus(""));
}

/// A fabricated /proc.
class ProcessTableTest : public testing::Test {
 protected:
  void Add(pid_t pid, const std::string& name, const std::string& executable = "") {
    const std::string entry = std::to_string(pid);
    directory_.Write(entry + "/comm", name + "\n");
    if (!executable.empty()) fs::create_symlink(executable, directory_.File(entry + "/exe"));
  }

  const TemporaryDirectory directory_;
  const ProcessTable table_{directory_.Path().string()};
};

TEST_F(ProcessTableTest, ListsNumbersOnly) {
  Add(20, "b");
  Add(3, "a");
  for (const char* name : {"self", "12x", "-4", "0", "99999999999", "+5"})
    fs::create_directory(directory_.File(name));
  Pids pids{1};
  EXPECT_TRUE(table_.List(pids));
  EXPECT_EQ(pids, (Pids{3, 20}));
  EXPECT_FALSE(ProcessTable(directory_.File("missing")).List(pids));
  EXPECT_TRUE(pids.empty());
  EXPECT_FALSE(ProcessTable(directory_.File("missing")).FindByName("a").IsComplete());
}

TEST_F(ProcessTableTest, FindsNamesAsTheKernelKeepsThem) {
  const std::string odd = "a) S 1 (b c\n";
  Add(1, odd);
  Add(2, "management-agen", "/usr/sbin/management-agent");
  Add(3, "management-agen", "/usr/sbin/management-agent-helper");
  Add(4, "management-agen", "/usr/bin/python3");
  Add(5, "management-agen");
  Add(6, "management-age");
  Add(7, "kworker/u8:1-events_unbound");
  Add(8, "management-agen", "/old/management-agent (deleted)");
  const struct {
    const char* name;
    Pids pids;
  } rows[] = {
      {"a) S 1 (b c\n", {1}},
      {"a) S 1 (b c", {}},
      {"management-agent", {2, 4, 5, 8}},
      {"management-agent-helper", {3, 4, 5}},
      {"management-agen", {4, 5}},
      {"management-age", {6}},
      {"kworker/u8:1-events_unbound", {7}},
      {"", {}},
  };
  for (const auto& row : rows) {
    const ProcessMatches matches = table_.FindByName(row.name);
    EXPECT_EQ(matches.pids, row.pids) << row.name;
    EXPECT_TRUE(matches.IsComplete());
  }
}

TEST_F(ProcessTableTest, TellsDeletedExecutables) {
  const std::string odd = directory_.Write("named so (deleted)", "");
  Add(1, "a", "/no/such/agent (deleted)");
  Add(2, "a", odd);
  Add(3, "a", "/no/such/agent");
  Add(4, "a");
  ProcessExecutable executable;
  EXPECT_EQ(table_.ReadExecutable(1, executable), ProcessReading::kRead);
  EXPECT_EQ(executable.path, "/no/such/agent");
  EXPECT_TRUE(executable.isDeleted);
  EXPECT_EQ(table_.ReadExecutable(2, executable), ProcessReading::kRead);
  EXPECT_EQ(executable.path, odd);
  EXPECT_FALSE(executable.isDeleted);
  EXPECT_EQ(table_.ReadExecutable(4, executable), ProcessReading::kNoExecutable);
  EXPECT_EQ(executable.path, "");
  EXPECT_EQ(table_.ReadExecutable(5, executable), ProcessReading::kGone);
  EXPECT_EQ(table_.FindByExecutable("/no/such/agent").pids, (Pids{1, 3}));
  EXPECT_TRUE(table_.FindByExecutable("/no/such/agent").IsComplete());
}

TEST_F(ProcessTableTest, WhatCannotBeReadIsNotAbsent) {
  Add(1, "a");
  // Went away after it was listed.
  fs::create_directory(directory_.File("2"));
  fs::create_directories(directory_.File("3/comm"));
  directory_.Write("3/status", "State:\tS\n");
  std::string name;
  ProcessStatus status;
  EXPECT_EQ(table_.ReadName(2, name), ProcessReading::kGone);
  EXPECT_EQ(table_.ReadStatus(2, status), ProcessReading::kGone);
  EXPECT_EQ(table_.ReadName(3, name), ProcessReading::kFailed);
  EXPECT_EQ(table_.ReadStatus(3, status), ProcessReading::kFailed);
  const ProcessMatches matches = table_.FindByName("a");
  EXPECT_EQ(matches.pids, Pids{1});
  EXPECT_EQ(matches.unknown, Pids{3});
  EXPECT_FALSE(matches.IsComplete());
}

TEST_F(ProcessTableTest, DeniedIsNotAbsent) {
  Add(1, "a", "/a");
  chmod(directory_.Path().c_str(), 0755);
  chmod(directory_.File("1").c_str(), 0);
  const uid_t self = geteuid();
  if (self == 0) {
    ASSERT_EQ(seteuid(65534), 0);
  }
  std::string name;
  ProcessStatus status;
  ProcessExecutable executable;
  const ProcessReading readings[] = {table_.ReadName(1, name), table_.ReadStatus(1, status),
                                     table_.ReadExecutable(1, executable)};
  const ProcessMatches matches = table_.FindByName("a");
  ASSERT_EQ(seteuid(self), 0);
  // Changing the user makes this process and its children closed to others.
  prctl(PR_SET_DUMPABLE, 1);
  chmod(directory_.File("1").c_str(), 0755);
  for (const ProcessReading reading : readings) EXPECT_EQ(reading, ProcessReading::kDenied);
  EXPECT_EQ(matches.unknown, Pids{1});
}

TEST(ProcessTable, SeesThisProcess) {
  const ProcessTable table;
  ProcessStatus status;
  ASSERT_EQ(table.ReadStatus(getpid(), status), ProcessReading::kRead);
  EXPECT_EQ(status.pid, getpid());
  EXPECT_EQ(status.parent, getppid());
  EXPECT_EQ(status.effectiveUser, geteuid());
  EXPECT_GT(status.residentKib.value_or(0), 100U);
  EXPECT_TRUE(status.IsRunning());
  ProcessExecutable executable;
  ASSERT_EQ(table.ReadExecutable(getpid(), executable), ProcessReading::kRead);
  EXPECT_EQ(executable.path, fs::read_symlink("/proc/self/exe"));
  EXPECT_TRUE(std::ranges::count(table.FindByExecutable(executable.path).pids, getpid()) == 1);
  EXPECT_TRUE(std::ranges::count(table.FindByName(status.name).pids, getpid()) == 1);
}

TEST(ProcessTable, SeesNamesAndZombiesOfTheKernel) {
  const ProcessTable table;
  const char kName[] = "a) Z\n\\ (b";
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    prctl(PR_SET_NAME, kName);
    [[maybe_unused]] const ssize_t put = write(ready[1], "", 1);
    pause();
    _exit(0);
  }
  char byte;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  std::string name;
  ProcessStatus status;
  EXPECT_EQ(table.ReadName(child, name), ProcessReading::kRead);
  EXPECT_EQ(name, kName);
  EXPECT_EQ(table.ReadStatus(child, status), ProcessReading::kRead);
  EXPECT_EQ(status.name, kName);
  EXPECT_EQ(table.FindByName(kName).pids, Pids{child});

  kill(child, SIGKILL);
  siginfo_t ended;
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
  EXPECT_EQ(table.ReadStatus(child, status), ProcessReading::kRead);
  EXPECT_TRUE(status.IsZombie());
  EXPECT_FALSE(status.IsRunning());
  EXPECT_FALSE(status.residentKib);
  ProcessExecutable executable;
  EXPECT_EQ(table.ReadExecutable(child, executable), ProcessReading::kNoExecutable);

  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  EXPECT_EQ(table.ReadName(child, name), ProcessReading::kGone);
  EXPECT_EQ(table.ReadStatus(child, status), ProcessReading::kGone);
  EXPECT_EQ(table.ReadExecutable(child, executable), ProcessReading::kGone);
  close(ready[0]);
  close(ready[1]);
}

}  // namespace
}  // namespace emstatus::test
