#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost simulate: see docs/HOST.md. Ends with 0 when it is done as asked.
std::function<int()> SetUpSimulateCommand(CLI::App& command);

}  // namespace emstatus::host
