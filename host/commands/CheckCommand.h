#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost check, a check plugin: see docs/HOST.md. Ends with 0 OK, 1 warning, 2 critical, 3 unknown, and says
/// what is unknown on standard output.
std::function<int()> SetUpCheckCommand(CLI::App& command);

}  // namespace emstatus::host
