#include "host/commands/JsonCommand.h"

#include <iostream>
#include <memory>

#include "host/commands/ReportSource.h"
#include "host/commands/StatusService.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

std::function<int()> SetUpJsonCommand(CLI::App& command) {
  const auto options = std::make_shared<ReportOptions>();
  AddReportOptions(command, *options);
  command.footer(
      "Examples:\n"
      "  emhost json                                       what the running emhost knows\n"
      "  emhost json | jq .SystemStatusName                one value of it\n"
      "  emhost json --own-scan --link eth0                a scan of its own\n"
      "Exit code: 0 all good, 1 warning, 2 error, 3 no status or no report.");
  return [options] {
    const nlohmann::ordered_json report = FetchReportJson(*options);
    std::cout << JsonText(report, true) << std::endl;
    return ExitCodeOf(report.value("SystemStatus", 0U));
  };
}

}  // namespace emstatus::host
