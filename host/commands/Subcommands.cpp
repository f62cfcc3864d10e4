#include "host/commands/Subcommands.h"

#include "host/commands/CheckCommand.h"
#include "host/commands/CheckConfigCommand.h"
#include "host/commands/CompareCommand.h"
#include "host/commands/EventsCommand.h"
#include "host/commands/ExplainCommand.h"
#include "host/commands/FaultsCommand.h"
#include "host/commands/JsonCommand.h"
#include "host/commands/RecordCommand.h"
#include "host/commands/ReplayCommand.h"
#include "host/commands/RunCommand.h"
#include "host/commands/SimulateCommand.h"
#include "host/commands/TreeCommand.h"

namespace emstatus::host {
namespace {

constexpr Subcommand kSubcommands[] = {
    {"run", "Load the module, show the status tree, then each event as it comes", SetUpRunCommand},
    {"tree", "Show the status tree of the running emhost, or of a scan of its own", SetUpTreeCommand},
    {"json", "Show the same as JSON", SetUpJsonCommand},
    {"events", "Show what has happened in the running emhost, and go on with --follow", SetUpEventsCommand},
    {"simulate", "Force the status of a part for a while, to see what would happen", SetUpSimulateCommand},
    {"explain", "Tell why a part, or the whole system, has its status, and what to do", SetUpExplainCommand},
    {"check", "A check plugin: one line, performance data, exit code", SetUpCheckCommand, true},
    {"check-config", "Tell what is wrong with a configuration, also what the module passes over in silence",
     SetUpCheckConfigCommand},
    {"faults", "Show what each single fault does, part by part: a table of the configuration",
     SetUpFaultsCommand},
    {"record", "As run, and keep all that passes between host and module in a file", SetUpRecordCommand},
    {"replay", "Feed a recording to the module again, and compare what comes out", SetUpReplayCommand},
    {"compare", "Show when two configurations disagree on a recording", SetUpCompareCommand},
};

}  // namespace

std::span<const Subcommand> Subcommands() {
  return kSubcommands;
}

}  // namespace emstatus::host
