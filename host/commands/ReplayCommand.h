#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost replay: see docs/HOST.md. Ends with 0 when all is as recorded, 1 when something differs.
std::function<int()> SetUpReplayCommand(CLI::App& command);

}  // namespace emstatus::host
