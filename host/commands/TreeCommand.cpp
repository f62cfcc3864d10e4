#include "host/commands/TreeCommand.h"

#include <chrono>
#include <iostream>
#include <memory>

#include "host/commands/ReportSource.h"
#include "host/view/Colours.h"
#include "host/view/ReportAge.h"
#include "host/view/TreePrinter.h"

namespace emstatus::host {

std::function<int()> SetUpTreeCommand(CLI::App& command) {
  const auto options = std::make_shared<ReportOptions>();
  AddReportOptions(command, *options);
  command.footer(
      "Examples:\n"
      "  emhost tree                                  what the running emhost knows\n"
      "  emhost tree --own-scan --unit ssh.service    a scan of its own\n"
      "Exit code: 0 all good, 1 warning, 2 error, 3 no status or no report.");
  return [options] {
    const FetchedReport fetched = FetchReportAndWords(*options);
    std::cout << TreeText(fetched.report, fetched.words, StandardOutputTakesColours())
              << LastScanText(fetched.report, std::chrono::system_clock::now()) << std::flush;
    return ExitCodeOf(fetched.report.systemStatus);
  };
}

}  // namespace emstatus::host
