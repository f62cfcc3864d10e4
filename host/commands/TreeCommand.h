#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost tree: see docs/HOST.md. Ends by ExitCodeOf().
std::function<int()> SetUpTreeCommand(CLI::App& command);

}  // namespace emstatus::host
