#include "host/commands/ReplayArguments.h"

#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <system_error>

#include "host/commands/DefaultPaths.h"
#include "host/commands/RunningHost.h"
#include "host/configuration/UnpausedConfiguration.h"
#include "host/recording/RecordingReader.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kMostToldRequests = 10;

}  // namespace

void AddReplayArguments(CLI::App& command, ReplayArguments& arguments) {
  command
      .add_option("--module", arguments.module,
                  "The module's library (default: libEM_STATUS.so beside emhost)")
      ->type_name("PATH");
  command
      .add_option("--trace", arguments.traceLevel,
                  "The module's trace level; the trace goes to standard error")
      ->check(CLI::Range(0, 9).description(""))
      ->type_name("LEVEL");
  command.add_flag("--json", arguments.json, "For programs");
}

ReplayOptions PrepareReplay(const ReplayArguments& arguments) {
  ReplayOptions options;
  options.recording = std::filesystem::absolute(arguments.recording).lexically_normal();
  const RecordingExtent extent = CheckRecording(options.recording);
  if (extent.cut) {
    std::cerr << "emhost: " << arguments.recording << " has no end: it was interrupted or cut. What follows "
              << "scan " << extent.scans << " is missing." << std::endl;
  }
  options.module = AbsoluteModule(arguments.module);
  SetTraceLevel(arguments.traceLevel);
  return options;
}

std::string ConfigurationAt(const std::string& path) {
  std::error_code ignored;
  const bool isFolder = std::filesystem::is_directory(path, ignored);
  const std::string file = isFolder ? (std::filesystem::path(path) / "EM_STATUS.ini").string() : path;
  try {
    return ReadConfigurationFile(file);
  } catch (const std::system_error& error) {
    throw std::runtime_error("cannot read the configuration " + file + ": " + error.code().message() +
                             ". Name a folder with an EM_STATUS.ini, or the file itself.");
  }
}

void TellUnanswered(const ReplayTotals& totals, const std::string& who) {
  if (totals.unanswered.empty()) {
    return;
  }
  std::string list;
  std::size_t told = 0;
  for (const std::string& request : totals.unanswered) {
    list += (told == 0 ? "" : ", ") + (told == kMostToldRequests ? std::string("...") : request);
    if (told++ == kMostToldRequests) {
      break;
    }
  }
  std::cerr << "emhost: " << (who.empty() ? "" : who + ": ") << totals.unanswered.size()
            << " requests are not in the recording and failed (OC-OI-OE-CA): " << list << std::endl;
}

}  // namespace emstatus::host
