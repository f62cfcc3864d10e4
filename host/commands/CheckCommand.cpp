#include "host/commands/CheckCommand.h"

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "host/commands/ReportSource.h"
#include "host/view/CheckResult.h"

namespace emstatus::host {
namespace {

constexpr int kLongestSeconds = 86400;

struct CheckOptions {
  ReportOptions report;
  std::string node;
  std::string subsystem;
  int maximumAge = 120;
};

/// Whatever hangs, even at the end of the program: who called a check must not wait for it. Only what a
/// signal handler may call is called.
void EndLate(int) {
  constexpr std::string_view kLate = "UNKNOWN - no report of emhost within the time-out\n";
  [[maybe_unused]] const auto written = write(STDOUT_FILENO, kLate.data(), kLate.size());
  _exit(CheckResult::kUnknownCode);
}

CheckResult Check(const CheckOptions& options) {
  const FetchedReport fetched = FetchReportAndWords(options.report);
  const StatusNode& root = fetched.report.root;
  const NodePath node = !options.node.empty()        ? FindNode(root, options.node)
                        : !options.subsystem.empty() ? FindSubsystem(root, options.subsystem)
                                                     : NodePath{&root};
  return CheckNode(node, fetched.report, fetched.words, std::chrono::system_clock::now(),
                   std::chrono::seconds(options.maximumAge));
}

int RunCheck(const CheckOptions& options) {
  std::signal(SIGALRM, EndLate);
  alarm(unsigned(options.report.client.timeoutSeconds));
  CheckResult result;
  try {
    result = Check(options);
  } catch (const std::exception& error) {
    result = UnknownResult(error.what());
  }
  alarm(0);
  std::cout << result.output << std::flush;
  return result.code;
}

}  // namespace

std::function<int()> SetUpCheckCommand(CLI::App& command) {
  const auto options = std::make_shared<CheckOptions>();
  // First: each option that is there already would stand for a scan of its own.
  AddReportOptions(command, options->report);
  auto* const node = command.add_option("--node", options->node, "Check only this node, named as in explain")
                         ->type_name("NODE");
  command.add_option("--subsystem", options->subsystem, "Check only this subsystem")
      ->type_name("NAME")
      ->excludes(node);
  command.remove_option(command.get_option("--timeout"));
  command
      .add_option("-t,--timeout", options->report.client.timeoutSeconds,
                  "Seconds in which the check ends, whatever happens")
      ->check(CLI::Range(1, kLongestSeconds).description(""))
      ->type_name("SECONDS")
      ->capture_default_str();
  command
      .add_option("--maximum-age", options->maximumAge,
                  "Seconds from which a report of the running emhost is too old")
      ->check(CLI::Range(1, kLongestSeconds).description(""))
      ->type_name("SECONDS")
      ->capture_default_str();
  command.footer(
      "Examples:\n"
      "  emhost check                         the whole system\n"
      "  emhost check --subsystem Storage     one subsystem\n"
      "  emhost check --node \"Fans/Fan 2\"     one part\n"
      "Exit code: 0 OK, 1 warning, 2 critical, 3 unknown (also for --help, --version and any failure).");
  return [options] { return RunCheck(*options); };
}

}  // namespace emstatus::host
