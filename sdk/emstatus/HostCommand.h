#pragma once

#include <emstatus/CommandValue.h>

namespace emstatus {

/// One request, answer, reply or event: a document and the position of the command being handled.
///
/// The document is an object whose member "SIP" is an object whose member "CMD" is an array of command
/// objects. Members of a command, all optional: "OC" operation code, "OE" its extension, "OI" object id,
/// "CA" cabinet, "MI" module id, "ST" status, "DA" data. Raw bytes in "DA" are {"RAW":[n, n, ...]}.
struct HostCommand {
  CommandValue document;
  std::uint32_t current;
};

static_assert(std::is_trivially_copyable_v<HostCommand> && std::is_standard_layout_v<HostCommand>);
static_assert(sizeof(HostCommand) == 32 && offsetof(HostCommand, current) == 24);

}  // namespace emstatus
