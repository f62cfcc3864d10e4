#include "host/commands/Subcommands.h"

#include "host/commands/RunCommand.h"
#include "host/commands/SimulateCommand.h"

namespace emstatus::host {
namespace {

constexpr Subcommand kSubcommands[] = {
    {"run", "Load the module, show the status tree, then each event as it comes", SetUpRunCommand},
    {"simulate", "Force the status of a part for a while, to see what would happen", SetUpSimulateCommand},
};

}  // namespace

std::span<const Subcommand> Subcommands() {
  return kSubcommands;
}

}  // namespace emstatus::host
