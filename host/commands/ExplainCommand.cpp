#include "host/commands/ExplainCommand.h"

#include <chrono>
#include <iostream>
#include <memory>
#include <string>

#include "host/commands/ReportSource.h"
#include "host/commands/StatusService.h"
#include "host/view/Colours.h"
#include "host/view/Explanation.h"
#include "host/view/ReportAge.h"

namespace emstatus::host {
namespace {

struct ExplainOptions {
  ReportOptions report;
  std::string node = "root";
  bool json = false;
};

int Explain(const ExplainOptions& options) {
  const FetchedReport fetched = FetchReportAndWords(options.report);
  const NodePath node = FindNode(fetched.report.root, options.node);
  if (options.json) {
    std::cout << JsonText(ExplanationJson(node, fetched.report, fetched.words), true) << std::endl;
  } else {
    const std::string lastScan = LastScanText(fetched.report, std::chrono::system_clock::now());
    std::cout << ExplanationText(node, fetched.report, fetched.words, StandardOutputTakesColours())
              << (lastScan.empty() ? "" : "\n" + lastScan) << std::flush;
  }
  return 0;
}

}  // namespace

std::function<int()> SetUpExplainCommand(CLI::App& command) {
  const auto options = std::make_shared<ExplainOptions>();
  AddReportOptions(command, options->report);
  command.add_option("node", options->node,
                     "A node: its id, what the tree shows, its name or section in the configuration, an "
                     "instance, or a path of these (default: the system)");
  command.add_flag("--json", options->json, "For programs");
  command.footer(
      "Examples:\n"
      "  emhost explain                       why the system has its status\n"
      "  emhost explain \"Fans/Fan 2\"          one part\n"
      "  emhost explain Component.Disks       a component, by its section\n"
      "Exit code: 0 explained, 3 no such node, several of them, or no report.");
  return [options] { return Explain(*options); };
}

}  // namespace emstatus::host
