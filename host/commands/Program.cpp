#include "host/commands/Program.h"

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "host/commands/ProgramVersion.h"
#include "host/commands/Subcommands.h"
#include "host/configuration/NearestName.h"

namespace emstatus::host {
namespace {

/// What went wrong tells nothing of the machine's status.
constexpr int kUnknownStatus = 3;

/// The parser would only say that it did not expect the word.
void CheckCommandName(const std::string& word) {
  std::vector<std::string> names;
  for (const Subcommand& row : Subcommands()) {
    if (word == row.name) {
      return;
    }
    names.emplace_back(row.name);
  }
  const std::string nearest = NearestName(word, names);
  throw std::runtime_error("there is no command \"" + word + "\"." +
                           (nearest.empty() ? std::string() : " Did you mean " + nearest + "?") +
                           " emhost --help lists them all.");
}

}  // namespace

Program::Program() : app_("emhost: shows the health of this machine through an extension module", "emhost") {
  const std::string version = std::string("emhost ") + ProgramVersion();
  app_.set_version_flag("--version", version);
  app_.require_subcommand(1);
  app_.footer(
      "Examples:\n"
      "  emhost run --once                                          this machine, once\n"
      "  emhost run                                                 this machine, until Ctrl-C\n"
      "  emhost run --provider scenario:examples/server.json        a server that is played\n"
      "  emhost tree                                                what the running emhost knows\n"
      "  emhost run --help                                          the options of a command");
  for (const Subcommand& row : Subcommands()) {
    CLI::App* command = app_.add_subcommand(row.name, row.description);
    commands_.emplace_back(command, row.setUp(*command));
    command->set_version_flag("--version", version);
    checkPlugin_ = row.isCheckPlugin ? command : checkPlugin_;
  }
}

int Program::Run(int argc, const char* const* argv) {
  try {
    if (argc > 1 && argv[1][0] != '-') {
      CheckCommandName(argv[1]);
    }
    app_.parse(argc, argv);
    for (const auto& [command, run] : commands_) {
      if (command->parsed()) {
        return run();
      }
    }
  } catch (const CLI::ParseError& error) {
    if (checkPlugin_ != nullptr && checkPlugin_->parsed()) {
      app_.exit(error, std::cout, std::cout << (error.get_exit_code() == 0 ? "" : "UNKNOWN - "));
      return kUnknownStatus;
    }
    return app_.exit(error) == 0 ? 0 : kUnknownStatus;
  } catch (const std::exception& error) {
    std::cerr << "emhost: " << error.what() << std::endl;
  }
  return kUnknownStatus;
}

}  // namespace emstatus::host
