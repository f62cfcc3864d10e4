#include "platform/CDebugClient.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <syslog.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <thread>

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TraceCapture.h"

namespace emstatus::test {
namespace {

class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (value != nullptr) setenv(name, value, 1);
  }
  ~Variable() { unsetenv(name_); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  const char* const name_;
};

struct Row {
  const char* what;
  std::vector<std::pair<const char*, std::string>> files;
  std::uint32_t level;
  const char* variable = nullptr;
};

std::string Section(const std::string& text) {
  return "[EM_STATUS]\n" + text + "\n[EndOfFile]\n";
}

TEST(CDebugClient, ReadsItsLevelFromTheFiles) {
  const Row rows[] = {
      {"plain", {{"a.ini", Section("FileDebugLevel=3")}}, 3},
      {"blank and hexadecimal", {{"a.ini", Section("FileDebugLevel= 0x4")}}, 4},
      {"octal", {{"a.ini", Section("FileDebugLevel=010")}}, 8},
      {"blank before the sign, value on the next line", {{"a.ini", Section("FileDebugLevel =\r\n\t6\r")}}, 6},
      {"no more than 63 characters",
       {{"a.ini", Section("FileDebugLevel=" + std::string(62, '0') + "17")}},
       1},
      {"key found in the middle of another",
       {{"a.ini", Section("OldFileDebugLevel=2\nFileDebugLevel=5")}},
       2},
      {"sign of a later key", {{"a.ini", Section("FileDebugLevel\nTraceFlags=7")}}, 7},
      {"no sign", {{"a.ini", Section("FileDebugLevel 5")}}, 0},
      {"the value that stands for none", {{"a.ini", Section("FileDebugLevel=0xFFFFFFFF")}}, 0},
      {"names in another case", {{"a.ini", "[em_status]\nFileDebugLevel=3\n[ENDOFFILE]"}}, 3},
      {"text behind the end section", {{"a.ini", Section("FileDebugLevel=3") + "anything"}}, 3},
      {"last section has another name", {{"a.ini", Section("FileDebugLevel=3") + "[Other]\n"}}, 0},
      {"no section at all", {{"a.ini", "FileDebugLevel=3\n"}, {"b.ini", ""}, {"c.ini", "]["}}, 0},
      {"section is not there", {{"a.ini", "[X]\nFileDebugLevel=3\n[EndOfFile]"}}, 0},
      {"key of the next section", {{"a.ini", "[EM_STATUS]\n[X]\nFileDebugLevel=3\n[EndOfFile]"}}, 0},
      {"first of two equal sections",
       {{"a.ini", "[EM_STATUS]\nFileDebugLevel=1\n" + Section("FileDebugLevel=3")}},
       1},
      {"first file wins",
       {{"b.ini", Section("FileDebugLevel=2")}, {"a.ini", Section("FileDebugLevel=1")}},
       1},
      {"incomplete file is passed over",
       {{"a.ini", "[EM_STATUS]\nFileDebugLevel=1\n"}, {"b.ini", Section("FileDebugLevel=2")}},
       2},
      {"left by an editor",
       {{".#a.ini", Section("FileDebugLevel=1")}, {"b.ini.new", Section("FileDebugLevel=2")}},
       2},
      {"not a trace file", {{"a.txt", Section("FileDebugLevel=1")}}, 0, "3"},
      {"variable before file", {{"a.ini", Section("FileDebugLevel=5")}}, 3, "3"},
      {"variable without section", {{"a.ini", ""}}, 3, "3"},
      {"variable is decimal", {{"a.ini", ""}}, 10, "010"},
      {"variable is ignored with an empty directory", {}, 0, "3"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    const TemporaryDirectory directory;
    for (const auto& [name, text] : row.files) directory.Write(name, text);
    const Variable variable("QX_LOG_DEBUG_LEVEL", row.variable);
    const CDebugClient client("EM_STATUS", {.directory = directory.Path().c_str()});
    EXPECT_EQ(client.Level(), row.level);
    EXPECT_EQ(client.Enabled(), row.level != 0);
    EXPECT_TRUE(client.Passes(row.level));
    EXPECT_FALSE(client.Passes(row.level + 1));
    EXPECT_EQ(client.PassesEnabled(row.level), row.level != 0);
  }
}

TEST(CDebugClient, ReadsTheEnvironmentWithoutDirectory) {
  const TemporaryDirectory directory;
  const std::string missing = directory.File("missing");
  const Variable level("QX_LOG_DEBUG_LEVEL", "3");
  EXPECT_EQ(CDebugClient("EM_STATUS", {.directory = missing.c_str()}).Level(), 3U);
  const Variable highest("QX_LOG_DEBUG_LEVEL", "4294967295");
  EXPECT_TRUE(CDebugClient("EM_STATUS", {.directory = missing.c_str()}).Passes(0xFFFFFFFE));
}

TEST(CDebugClient, IsNotHeldUpByWhatIsNoFile) {
  const TemporaryDirectory directory;
  ASSERT_EQ(mkfifo(directory.File("a.ini").c_str(), 0600), 0);
  std::filesystem::create_directory(directory.File("b.ini"));
  directory.Write("c.ini", Section("FileDebugLevel=3"));
  EXPECT_EQ(CDebugClient("EM_STATUS", {.directory = directory.Path().c_str()}).Level(), 3U);
}

std::atomic<std::time_t> clockTime{0};

/// A client that follows its files every 10 seconds of `clockTime`.
class Following : public testing::Test {
 protected:
  Following() {
    clockTime = 1000;
    WriteGlobal("DynamicUpdate=10");
    Write(Section("FileDebugLevel=1"));
  }

  void Start() {
    client_.emplace("EM_STATUS", TraceSurroundings{.directory = directory_.Path().c_str(),
                                                   .now = [](std::time_t*) { return clockTime.load(); }});
  }
  void Write(const std::string& text) { WriteAt("a.ini", text, ++written_); }
  void WriteGlobal(const std::string& key) {
    WriteAt("global_trace.ini", "[GlobalDebugSettings]\n" + key + "\n[EndOfFile]\n", ++written_);
  }
  void WriteAt(const char* name, const std::string& text, std::time_t modified) {
    // Renamed into place: a half-written file would be dropped for good.
    const std::string path = directory_.Write("new", text);
    const timespec times[] = {{modified, 0}, {modified, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    std::filesystem::rename(path, directory_.File(name));
  }
  /// The level after a call at this time, itself far above the level.
  std::uint32_t LevelAt(std::time_t now) {
    clockTime = now;
    client_->Trace(99, "%s", "");
    return client_->Level();
  }

  const TemporaryDirectory directory_;
  std::optional<CDebugClient> client_;
  std::time_t written_ = 1'600'000'000;
};

TEST_F(Following, TakesOverWhatHasChangedWhenItIsTime) {
  const Variable variable("QX_LOG_DEBUG_LEVEL", "4");
  Start();
  EXPECT_EQ(LevelAt(1000), 4U);
  EXPECT_TRUE(client_->Passes(99)) << "a call above the level must look at the clock";
  Write(Section("FileDebugLevel=5\nTraceFlags=0x10\nMemoryTracesFlag=3"));
  EXPECT_EQ(LevelAt(1009), 4U) << "too early";
  EXPECT_EQ(LevelAt(1010), 5U) << "the file now stands above the variable";
  EXPECT_EQ(client_->TraceFlags(), 0x10U);
  EXPECT_EQ(client_->MemoryTracesFlag(), 3U);
  Write(Section("FileDebugLevel=2"));
  EXPECT_EQ(LevelAt(900), 2U) << "the clock went back";
  WriteAt("a.ini", Section("FileDebugLevel=3"), written_ - 1);
  EXPECT_EQ(LevelAt(910), 2U) << "an older file";
  WriteGlobal("DynamicUpdate=100");
  EXPECT_EQ(LevelAt(920), 2U);
  Write(Section("FileDebugLevel=3"));
  EXPECT_EQ(LevelAt(1019), 2U) << "the new interval";
  EXPECT_EQ(LevelAt(1020), 3U);
  WriteGlobal("DynamicUpdate=0");
  EXPECT_EQ(LevelAt(1120), 3U);
  EXPECT_FALSE(client_->Passes(4)) << "no longer followed";
}

TEST_F(Following, ForgetsAFileThatVanished) {
  Start();
  std::filesystem::remove(directory_.File("a.ini"));
  EXPECT_EQ(LevelAt(1000), 1U);
  Write(Section("FileDebugLevel=5"));
  EXPECT_EQ(LevelAt(1010), 1U);
  std::filesystem::remove(directory_.File("global_trace.ini"));
  EXPECT_EQ(LevelAt(1020), 1U);
  WriteGlobal("DynamicUpdate=0");
  LevelAt(1030);
  EXPECT_TRUE(client_->Passes(99)) << "the interval stays without the file";
}

TEST_F(Following, ForgetsAFileThatIsIncomplete) {
  Start();
  Write("[EM_STATUS]\nFileDebugLevel=4\n");
  EXPECT_EQ(LevelAt(1000), 1U);
  Write(Section("FileDebugLevel=5"));
  EXPECT_EQ(LevelAt(1010), 1U);
}

TEST_F(Following, TakesTheIntervalFromTheVariable) {
  const Variable variable("QX_LOG_DYNAMIC_UPDATE", "3");
  Start();
  EXPECT_EQ(LevelAt(1000), 1U);
  Write(Section("FileDebugLevel=5"));
  EXPECT_EQ(LevelAt(1002), 1U);
  EXPECT_EQ(LevelAt(1003), 5U);
}

TEST_F(Following, StaysOffWhenItWasOffAtFirst) {
  Write(Section(""));
  Start();
  Write(Section("FileDebugLevel=5"));
  EXPECT_EQ(LevelAt(1000), 5U);
  EXPECT_FALSE(client_->Enabled());
  EXPECT_FALSE(client_->PassesEnabled(1));
  EXPECT_TRUE(client_->Passes(1));
}

TEST_F(Following, HoldsWhileManyThreadsTrace) {
  Start();
  std::atomic<bool> done{false};
  std::vector<std::jthread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      while (!done) client_->Trace(2, "%d", 1);
    });
  }
  for (int i = 1; i <= 50; ++i) {
    Write(Section("FileDebugLevel=" + std::to_string(i)));
    clockTime += 10;
    while (client_->Level() != static_cast<std::uint32_t>(i)) std::this_thread::yield();
  }
  done = true;
  threads.clear();
  Trace().Take();
}

/// What reached the system log.
std::vector<std::string> logged;
const SystemLogCalls kRecorder = {[](const char* identity, int options, int facility) {
                                    logged.push_back(std::string("open ") + identity);
                                    EXPECT_EQ(options, LOG_PID | LOG_CONS | LOG_NDELAY);
                                    EXPECT_EQ(facility, LOG_LOCAL1);
                                  },
                                  [](int priority, const char* text) {
                                    logged.emplace_back(text);
                                    EXPECT_EQ(priority, LOG_INFO);
                                  },
                                  [] { logged.emplace_back("close"); }};

TEST(CDebugClient, WritesLevelZeroToSinkAndSystemLog) {
  const TemporaryDirectory directory;
  logged.clear();
  Trace().Take();
  {
    CDebugClient client("EM_STATUS", {.directory = directory.Path().c_str(), .systemLog = &kRecorder});
    client.Trace(1, "above the level");
    client.Print("always %d", 1);
    client.Print(7, "always %d", 2);
    EXPECT_EQ(logged, std::vector<std::string>());
    client.Trace(0, "\n\nsome text %s %d", "and", 5);
    client.Trace(0, "second");
  }
  const std::vector<std::string> log = {"open " + std::string(program_invocation_short_name),
                                        "some text and 5", "second", "close"};
  EXPECT_EQ(logged, log);
  const std::vector<std::string> sink = {"always 1", "always 2", "\n\nsome text and 5", "second"};
  EXPECT_EQ(Trace().Take(), sink);
  logged.clear();
  {
    const CDebugClient unused("EM_STATUS", {.directory = directory.Path().c_str(), .systemLog = &kRecorder});
  }
  EXPECT_EQ(logged, std::vector<std::string>()) << "closed without having been opened";
}

/// The slot of a virtual operation as the compiler gave it, the destructor's two being 1 and 2.
template <typename Operation>
std::uintptr_t Slot(Operation operation) {
  std::uintptr_t offset = 0;
  std::memcpy(&offset, &operation, sizeof offset);
  return (offset - 1) / sizeof(void*) + 1;
}

TEST(CDebugClient, HasItsOperationsInOrder) {
  EXPECT_EQ(Slot(&CDebugClient::IsSink), 3U);
  EXPECT_EQ(Slot(&CDebugClient::Init), 4U);
  EXPECT_EQ(Slot(&CDebugClient::Trace), 5U);
  EXPECT_EQ(Slot(static_cast<void (CDebugClient::*)(const char*, ...)>(&CDebugClient::Print)), 6U);
  EXPECT_EQ(Slot(static_cast<void (CDebugClient::*)(std::uint32_t, const char*, ...)>(&CDebugClient::Print)),
            7U);
}

}  // namespace
}  // namespace emstatus::test
