#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost explain: see docs/HOST.md. Ends with 0 when the node was explained, whatever its status.
std::function<int()> SetUpExplainCommand(CLI::App& command);

}  // namespace emstatus::host
