#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// "check-config": tells what is wrong with a configuration, and what the module would pass over in silence.
std::function<int()> SetUpCheckConfigCommand(CLI::App& command);

}  // namespace emstatus::host
