#pragma once

#include <map>
#include <string>
#include <vector>

#include "config/StatusConfiguration.h"
#include "status/ComponentState.h"

namespace emstatus {

/// The status of a subsystem, NoStatus, OK, Warning or Error: the worst of its components, `answers` in the
/// order of the subsystem's list. A null answer stands for a component that is not defined. Traced.
StatusValue CalculateSubsystemStatus(const StatusConfiguration& configuration,
                                     const SubsystemDefinition& subsystem,
                                     const std::vector<const ComponentState*>& answers);

/// Raises `system` to the status of `subsystem` when that is worse, which is traced.
void RaiseSystemStatus(const StatusConfiguration& configuration, const SubsystemDefinition& subsystem,
                       StatusValue subsystemStatus, StatusValue& system);

}  // namespace emstatus
