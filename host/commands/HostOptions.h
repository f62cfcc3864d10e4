#pragma once

#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

#include "host/providers/LinuxProviders.h"

namespace emstatus::host {

/// What a scenario's file stands behind in --provider.
inline constexpr std::string_view kScenarioPrefix = "scenario:";

/// What every command that runs a module can be told.
struct HostOptions {
  /// Empty: found by DefaultPaths.
  std::string module;
  std::string configuration;
  /// "linux" or "scenario:FILE".
  std::string provider = "linux";
  /// The module's trace level; negative: as the environment has it.
  int traceLevel = -1;
  LinuxOptions linux;
};

/// Adds the options to a command. `options` must live until the command line is parsed. [main thread]
void AddHostOptions(CLI::App& command, HostOptions& options);

}  // namespace emstatus::host
