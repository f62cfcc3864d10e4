#include "host/commands/Program.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>

#include "host/commands/ProgramVersion.h"
#include "host/commands/StandardStreams.h"
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

/// What to do about an error whose own text does not tell.
std::string Advice(const std::system_error& error) {
  if (error.code() == std::errc::too_many_files_open) {
    return ". Allow more open files (ulimit -n, LimitNOFILE= of a unit).";
  }
  if (error.code() == std::errc::resource_unavailable_try_again) {
    return ": no thread can be started. Allow more (ulimit -u, TasksMax= of a unit), or more memory (ulimit -v).";
  }
  return "";
}

/// What does not arrive must not pass for shown.
int WithOutputWritten(int code) {
  if (FlushStandardOutput()) {
    return code;
  }
  std::cerr
      << "emhost: standard output cannot be written, so what it shows is not all. Is its disk full, or is "
         "it closed?"
      << std::endl;
  return kUnknownStatus;
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
  TakeClosedStandardStreams();
  // A file that may not grow is told as a disk that is full, and does not end the program on the spot.
  std::signal(SIGXFSZ, SIG_IGN);
  return WithOutputWritten(RunCommand(argc, argv));
}

int Program::RunCommand(int argc, const char* const* argv) {
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
  } catch (const std::system_error& error) {
    std::cerr << "emhost: " << error.what() << Advice(error) << std::endl;
  } catch (const std::bad_alloc&) {
    std::cerr << "emhost: there is not enough memory. Allow more (ulimit -v, MemoryMax= of a unit)."
              << std::endl;
  } catch (const std::exception& error) {
    std::cerr << "emhost: " << error.what() << std::endl;
  }
  return kUnknownStatus;
}

}  // namespace emstatus::host
