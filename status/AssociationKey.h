#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/ComponentDefinition.h"

namespace emstatus {

/// The key that ties a node to the object of the host's command interface behind it, such as
/// "TRIQ:0210-0003-0000-000C": operation code, object (`instanceIndex` or the request's own), extension and,
/// unless it is the server's own, cabinet, each in at least four hexadecimal digits. Empty for a component
/// without a query context.
std::string MakeAssociationKey(const ComponentDefinition& component,
                               std::optional<std::uint32_t> instanceIndex, std::uint32_t cabinet,
                               std::uint32_t serverCabinet);

}  // namespace emstatus
