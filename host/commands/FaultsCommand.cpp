#include "host/commands/FaultsCommand.h"

#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/commands/DefaultPaths.h"
#include "host/commands/FaultSurvey.h"
#include "host/commands/FrozenHost.h"
#include "host/configuration/Configuration.h"
#include "host/view/Colours.h"
#include "host/view/FaultTable.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {
namespace {

struct FaultsOptions {
  HostOptions host;
  std::vector<std::string> components;
  bool json = false;
};

FaultTable MakeFaultTable(const FaultsOptions& options, const std::string& folder, const StatusWords& words) {
  const auto cycles = ReadConfiguration(ReadIniFile(folder + "/EM_STATUS.ini")).advancedPollingCycles;
  const StopSignals signals;
  std::optional<FaultTable> table;
  if (const auto machine = Freeze(options.host, signals)) {
    FrozenHost host(options.host, folder, signals, *machine);
    table = FaultSurvey(host, *machine, words, cycles).Run(options.components);
  }
  if (!table) {
    throw std::runtime_error("stopped before the table was complete.");
  }
  return *table;
}

int ShowFaults(const FaultsOptions& options) {
  const std::string folder =
      FindConfiguration(options.host.configuration, ConfigurationCandidates(ProgramFolder()));
  const StatusWords words = StatusWords::FromFile(folder + "/EM_STATUS.ini");
  const FaultTable table = MakeFaultTable(options, folder, words);
  if (options.json) {
    std::cout << FaultTableJson(table, words).dump(2, ' ', false, nlohmann::json::error_handler_t::replace)
              << std::endl;
  } else {
    std::cout << FaultTableText(table, words, StandardOutputTakesColours()) << std::flush;
  }
  return HasWrongRows(table) ? 1 : 0;
}

}  // namespace

std::function<int()> SetUpFaultsCommand(CLI::App& command) {
  const auto options = std::make_shared<FaultsOptions>();
  AddHostOptions(command, options->host);
  command.add_option("--component", options->components, "Only the parts of this component (repeatable)")
      ->type_name("NAME")
      ->allow_extra_args(false);
  command.add_flag("--json", options->json, "For programs");
  command.footer(
      "Nothing is done to the machine: its parts are read once, taken as good, and made to fail one at a\n"
      "time in a copy.\n"
      "Examples:\n"
      "  emhost faults                                            this machine, its configuration\n"
      "  emhost faults --component Fans --component Disks         two components of it\n"
      "  emhost faults --config new --provider scenario:all.json  a configuration under work\n"
      "Exit code: 0 every fault shows and ends, 1 one changes nothing or does not end, 3 failed.");
  return [options] { return ShowFaults(*options); };
}

}  // namespace emstatus::host
