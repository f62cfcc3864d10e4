#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/commands/ProgramVersion.h"
#include "host/commands/Subcommands.h"

namespace {

/// What went wrong tells nothing of the machine's status.
constexpr int kUnknown = 3;

}  // namespace

int main(int argc, char** argv) {
  CLI::App program("emhost: shows the health of this machine through an extension module", "emhost");
  program.set_version_flag("--version", std::string("emhost ") + emstatus::host::ProgramVersion());
  program.require_subcommand(1);
  program.footer(
      "Examples:\n"
      "  emhost run --once                                          this machine, once\n"
      "  emhost run                                                 this machine, until Ctrl-C\n"
      "  emhost run --provider scenario:examples/server.json        a server that is played");
  std::vector<std::pair<CLI::App*, std::function<int()>>> commands;
  for (const auto& row : emstatus::host::Subcommands()) {
    CLI::App* command = program.add_subcommand(row.name, row.description);
    commands.emplace_back(command, row.setUp(*command));
  }
  try {
    program.parse(argc, argv);
    for (const auto& [command, run] : commands) {
      if (command->parsed()) {
        return run();
      }
    }
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : kUnknown;
  } catch (const std::exception& error) {
    std::cerr << "emhost: " << error.what() << std::endl;
  }
  return kUnknown;
}
