#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "host/view/StatusNode.h"

namespace emstatus::host {

/// The ID that the module has given an instance, by the names of subsystem and component in the
/// configuration; empty when it knows none.
using InstanceIdOf = std::function<std::string(const std::string& subsystem, const std::string& component,
                                               std::uint32_t index, std::uint32_t cabinet)>;

/// Gives each node the name that the configuration knows it by, and the section that describes it.
void NameNodes(StatusNode& root, const InstanceIdOf& instanceId);

}  // namespace emstatus::host
