#include "host/commands/Subcommands.h"

#include "host/commands/RunCommand.h"

namespace emstatus::host {
namespace {

constexpr Subcommand kSubcommands[] = {
    {"run", "Load the module, show the status tree, then each event as it comes", SetUpRunCommand},
};

}  // namespace

std::span<const Subcommand> Subcommands() {
  return kSubcommands;
}

}  // namespace emstatus::host
