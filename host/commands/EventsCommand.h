#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// emhost events: see docs/HOST.md. Ends with 0, also after a stop signal, and when the running emhost ends.
std::function<int()> SetUpEventsCommand(CLI::App& command);

}  // namespace emstatus::host
