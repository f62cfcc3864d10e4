#pragma once

#include <emstatus/HostCommand.h>

#include "host/machine/Request.h"

/// Taking commands of the module apart and writing answers into them. Whatever is missing or of the wrong
/// kind reads as absent. [any thread; a command belongs to one thread at a time]
namespace emstatus::host {

/// The command object at the current position; null when there is none.
const CommandValue* CurrentCommand(const HostCommand& command);

/// "ST" when there is none.
inline constexpr std::uint32_t kNoStatus = 22;

/// A number member of the current command, its low 32 bits; `otherwise` when it is missing or no number.
std::uint32_t ReadNumber(const HostCommand& command, std::string_view name, std::uint32_t otherwise);

/// A copy of "DA".
std::optional<nlohmann::json> ReadData(const HostCommand& command);

Request ReadRequest(const HostCommand& command);

/// A datum as a number: a number itself, or raw bytes, little-endian, of which the first four count.
std::optional<std::uint32_t> NumberOf(const std::optional<nlohmann::json>& data);

/// Sets "ST", and "DA" when the answer has data; a "DA" that the request brought is taken away otherwise.
/// False when the command has no place for them.
bool WriteAnswer(HostCommand& command, const Answer& answer);

}  // namespace emstatus::host
