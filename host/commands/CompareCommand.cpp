#include "host/commands/CompareCommand.h"

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/commands/ReplayArguments.h"
#include "host/commands/StopSignals.h"
#include "host/recording/Comparison.h"

namespace emstatus::host {
namespace {

struct CompareOptions {
  ReplayArguments replay;
  std::string oldConfiguration;
  std::string newConfiguration;
};

int Compare(const CompareOptions& options) {
  const StopSignals signals;
  const std::string oldText = ConfigurationAt(options.oldConfiguration);
  const std::string newText = ConfigurationAt(options.newConfiguration);
  const ComparisonResult result = CompareConfigurations(PrepareReplay(options.replay), oldText, newText,
                                                        [&signals] { return !signals.HasCome(); });
  if (signals.HasCome()) {
    throw std::runtime_error("stopped before the end of the recording.");
  }
  const bool agree = result.disagreements.IsEmpty();
  if (options.replay.json) {
    const nlohmann::ordered_json summary{{"Agree", agree},
                                         {"Scans", result.newTotals.scans},
                                         {"UnansweredOld", result.oldTotals.unanswered},
                                         {"UnansweredNew", result.newTotals.unanswered},
                                         {"Disagreements", result.disagreements.Json()}};
    std::cout << summary.dump(2) << std::endl;
    return agree ? 0 : 1;
  }
  std::cout << result.disagreements.Text()
            << (agree ? "the same in " : std::to_string(result.disagreements.Size()) + " disagreements in ")
            << result.newTotals.scans << " scans" << std::endl;
  TellUnanswered(result.oldTotals, "old");
  TellUnanswered(result.newTotals, "new");
  return agree ? 0 : 1;
}

}  // namespace

std::function<int()> SetUpCompareCommand(CLI::App& command) {
  const auto options = std::make_shared<CompareOptions>();
  command.add_option("old", options->oldConfiguration, "An EM_STATUS.ini, or its folder")
      ->type_name("OLD")
      ->required();
  command.add_option("new", options->newConfiguration, "Another one")->type_name("NEW")->required();
  command.add_option("file", options->replay.recording, "The recording")->type_name("FILE")->required();
  AddReplayArguments(command, options->replay);
  command.footer(
      "Shows each status, event and LED of which the two make different things, and in which scans.\n"
      "Examples:\n"
      "  emhost compare /etc/em_status ./etc fault.emrec.gz     what a change would have made of that day\n"
      "  emhost compare old.ini new.ini fault.emrec.gz --json\n"
      "Exit code: 0 nothing differs, 1 something does, 3 a configuration or the recording cannot be read.");
  return [options] { return Compare(*options); };
}

}  // namespace emstatus::host
