#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost run: see docs/HOST.md. Ends with 0 after a stop signal; with --once by ExitCodeOf().
std::function<int()> SetUpRunCommand(CLI::App& command);

}  // namespace emstatus::host
