#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost compare: see docs/HOST.md. Ends with 0 when nothing differs, 1 when something does.
std::function<int()> SetUpCompareCommand(CLI::App& command);

}  // namespace emstatus::host
