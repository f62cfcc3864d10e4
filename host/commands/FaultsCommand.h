#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost faults: see docs/HOST.md. Ends with 0 when every fault shows and ends, 1 when one does not, 3 when
/// that cannot be found out.
std::function<int()> SetUpFaultsCommand(CLI::App& command);

}  // namespace emstatus::host
