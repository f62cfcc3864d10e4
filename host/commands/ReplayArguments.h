#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "host/recording/Replay.h"

namespace emstatus::host {

/// What every command is told that replays a recording.
struct ReplayArguments {
  std::string recording;
  /// Empty: found by DefaultPaths.
  std::string module;
  /// The module's trace level; negative: as the environment has it.
  int traceLevel = -1;
  bool json = false;
};

/// Adds the options; the recording itself is up to the command. `arguments` must live until the command line
/// is parsed.
void AddReplayArguments(CLI::App& command, ReplayArguments& arguments);

/// Takes them over, with absolute paths, sets the trace level, and checks the recording as a whole; tells on
/// standard error when it is cut. Throws a std::runtime_error that is for people.
ReplayOptions PrepareReplay(const ReplayArguments& arguments);

/// The text of the configuration at a path: a folder with an EM_STATUS.ini, or such a file. Throws a
/// std::runtime_error that is for people.
std::string ConfigurationAt(const std::string& path);

/// Tells on standard error what a module asked that was never recorded; `who` may be empty.
void TellUnanswered(const ReplayTotals& totals, const std::string& who);

}  // namespace emstatus::host
