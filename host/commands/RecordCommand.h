#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost record: see docs/HOST.md. Ends with 0 when the recording was ended as wanted.
std::function<int()> SetUpRecordCommand(CLI::App& command);

}  // namespace emstatus::host
