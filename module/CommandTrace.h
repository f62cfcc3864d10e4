#pragma once

#include <cstdint>
#include <string>

#include <emstatus/HostCommand.h>

namespace emstatus {

/// Writes the current command as one line: operation, object, cabinet if it has one, module, status and
/// data. A number is shown as such, a structure as JSON text, anything else by its length in bytes.
/// [any thread]
void TraceCommand(std::uint32_t level, const std::string& tag, const HostCommand& command);

}  // namespace emstatus
