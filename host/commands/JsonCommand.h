#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost json: see docs/HOST.md. Ends by ExitCodeOf().
std::function<int()> SetUpJsonCommand(CLI::App& command);

}  // namespace emstatus::host
