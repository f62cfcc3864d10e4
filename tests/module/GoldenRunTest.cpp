// Whole runs of the module against scripted hosts, compared line by line with what they are to write.
//
// A case is a folder of tests/data/runs: EM_STATUS.ini, perhaps EM_STATUS_simu.ini, host.txt (a script, see
// tests/support/ScriptedHost.h, with "!" lines for the run itself) and expect.txt, in which every trace line
// stands behind its level and everything the host saw behind "@". EM_UPDATE_GOLDEN=1 writes expect.txt anew.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "data/Command.h"
#include "data/JsonWriter.h"
#include "data/OwnedCommand.h"
#include "module/EM_Status.h"
#include "platform/CDebugClient.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TraceCapture.h"

namespace emstatus::test {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

/// What differs from run to run is replaced; line feeds become visible.
std::string Normalised(std::string line) {
  static const std::regex kPointer("0x[0-9a-f]{9,}");
  static const std::regex kThread("(thread=|[Tt]hread = |created, thread )0x[0-9A-F]+");
  static const std::regex kTime("sec=[0-9]+");
  line = std::regex_replace(line, kPointer, "PTR");
  line = std::regex_replace(line, kThread, "$1THREAD");
  line = std::regex_replace(line, kTime, "sec=T");
  std::string visible;
  for (const char c : line) visible += c == '\n' ? std::string("\\n") : std::string(1, c);
  return visible;
}

/// The lines "! KEY VALUE..." of a script.
std::vector<std::pair<std::string, std::string>> RunLines(const std::string& script) {
  std::vector<std::pair<std::string, std::string>> found;
  std::istringstream lines(script);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("! ")) continue;
    const std::size_t space = std::min(line.find(' ', 2), line.size());
    found.emplace_back(line.substr(2, space - 2), line.substr(std::min(space + 1, line.size())));
  }
  return found;
}

/// "request OC OE OI CA [number N|text T|raw N N ...]": what the host asks of the module.
OwnedCommand RequestOf(const std::string& text) {
  std::istringstream words(text);
  CommandAddress address;
  words >> std::hex >> address.operation >> address.extension >> address.object >> address.cabinet >>
      std::dec;
  OwnedCommand command(address);
  std::string form;
  words >> form;
  if (form == "number") {
    long long number = 0;
    words >> number;
    command.AddData(OwnedValue::Integer(number));
  } else if (form == "text") {
    std::string data;
    std::getline(words >> std::ws, data);
    command.AddData(OwnedValue::Text(data));
  } else if (form == "raw") {
    std::vector<std::uint8_t> bytes;
    for (int byte = 0; words >> byte;) bytes.push_back(static_cast<std::uint8_t>(byte));
    command.AddData(OwnedValue::Raw(bytes));
  }
  return command;
}

class GoldenRun {
 public:
  explicit GoldenRun(const fs::path& folder)
      : folder_(folder), script_(ReadFile(folder / "host.txt")), run_(RunLines(script_)) {}

  /// One run at a trace level; everything that was written and seen.
  std::vector<std::string> At(int level) {
    SetLevel(level);
    // The number of the server's cabinet is the process's, not the module's.
    CExtensionModule().SetCabNr(0);
    Trace().Take();
    fs::current_path(folder_);
    ScriptedHost host(script_);
    {
      EM_Status module;
      Prepare(module, host);
      module.Start(&host, 0);
      if (Value("shutdown") == "early") module.OnNotification(HWN_SWITCH_SHUTDOWN, 1, nullptr);
      module.StartThreads();
      if (Value("shutdown") != "early") {
        EXPECT_TRUE(Trace().WaitFor("THREAD_RETURN"));
      }
      module.Stop();
    }
    std::vector<std::string> lines = Trace().Take();
    const auto end = std::ranges::find(lines, kEndOfLevel0);
    lines.erase(std::remove_if(end, lines.end(), [](const auto& line) { return !line.starts_with("@ "); }),
                lines.end());
    // The new thread's first lines and its starter's last one come in either order.
    std::erase_if(lines, [](const std::string& line) { return line.find("CThread::Start: thread=") == 1; });
    for (std::string& line : lines) {
      line = Normalised(std::move(line));
      for (auto at = line.find(folder_.string()); at != std::string::npos; at = line.find(folder_.string())) {
        line.replace(at, folder_.string().size(), "FOLDER");
      }
    }
    return lines;
  }

  /// The lines of the finest run, each behind the lowest level that writes it.
  std::string Annotated() {
    std::string text;
    for (const std::string& line : LinesWithLevels([this](int level) { return At(level); }))
      text += line + '\n';
    return text;
  }

 private:
  static void SetLevel(int level) {
    setenv("QX_LOG_DEBUG_LEVEL", std::to_string(level).c_str(), 1);
    debugClient.Init("EM_STATUS");
  }

  std::string Value(const std::string& wanted) const {
    const auto found = std::ranges::find(run_, wanted, &std::pair<std::string, std::string>::first);
    return found == run_.end() ? "" : found->second;
  }

  void Prepare(EM_Status& module, ScriptedHost& host) {
    const int scans = Value("scans").empty() ? 1 : std::stoi(Value("scans"));
    const auto end = Value("end").empty() ? 0x1033 : std::stoul(Value("end"), nullptr, 16);
    for (const auto& [key, value] : run_) {
      if (key == "cabinet") module.SetCabNr(static_cast<std::uint32_t>(std::stoul(value)));
      if (key == "kind") host.kind = static_cast<std::uint32_t>(std::stoul(value));
      if (key == "extensions") {
        std::istringstream words(value);
        std::vector<std::uint32_t> cabinets;
        for (std::uint32_t cabinet = 0; words >> cabinet;) cabinets.push_back(cabinet);
        module.SetServerSeList(cabinets.data(), static_cast<std::uint32_t>(cabinets.size()));
      }
    }
    // The LED command ends a scan. That of the last scan, or what "! end" names instead, brings the
    // replies, the requests and the shutdown.
    host.onRequest = [this, &module, scans, end](std::uint32_t operation, int scan) {
      if (operation != end || scan < scans) return;
      for (const auto& [key, value] : run_) {
        if (key != "request" && key != "reply") continue;
        OwnedCommand command = RequestOf(value);
        if (key == "reply") {
          SetStatus(command, 255);
          module.OnReply(command);
        } else {
          const bool handled = module.OnRequest(command);
          Trace().Note((handled ? "@ answer " : "@ unknown ") + JsonText(command.document));
        }
      }
      module.OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
      if (debugClient.Passes(1)) return;
      // The end of the polling thread is to be written all the same, to be waited for.
      Trace().Note(kEndOfLevel0);
      SetLevel(1);
    };
  }

  static constexpr const char* kEndOfLevel0 = "end of level 0";

  fs::path folder_;
  std::string script_;
  std::vector<std::pair<std::string, std::string>> run_;
};

class GoldenRunTest : public testing::TestWithParam<std::string> {};

TEST_P(GoldenRunTest, WritesAndSendsWhatIsExpected) {
  const fs::path folder = fs::path(EM_SOURCE_DIR) / "tests/data/runs" / GetParam();
  const std::string text = GoldenRun(folder).Annotated();
  if (std::getenv("EM_UPDATE_GOLDEN") != nullptr) {
    std::ofstream(folder / "expect.txt") << text;
    GTEST_SKIP() << "expect.txt written";
  }
  std::istringstream expected(ReadFile(folder / "expect.txt"));
  std::istringstream found(text);
  std::string expectedLine;
  std::string foundLine;
  for (int number = 1;; ++number) {
    const bool more = static_cast<bool>(std::getline(expected, expectedLine));
    ASSERT_EQ(more, static_cast<bool>(std::getline(found, foundLine)))
        << "line " << number << " of expect.txt: " << (more ? expectedLine : "end, but found: " + foundLine);
    if (!more) break;
    ASSERT_EQ(foundLine, expectedLine) << "line " << number << " of expect.txt";
  }
}

std::vector<std::string> Cases() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(fs::path(EM_SOURCE_DIR) / "tests/data/runs")) {
    names.push_back(entry.path().filename());
  }
  std::ranges::sort(names);
  return names;
}

INSTANTIATE_TEST_SUITE_P(Runs, GoldenRunTest, testing::ValuesIn(Cases()),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace emstatus::test
