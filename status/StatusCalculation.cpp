#include "status/StatusCalculation.h"

#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

/// OK, Warning and Error in their plain order; no other value counts for a subsystem.
bool RaisesSubsystem(StatusValue component, StatusValue subsystem) {
  return component >= OK && component <= Error && component > subsystem;
}

void TraceRaised(StatusValue status, const std::string& component) {
  const char* name = component.c_str();
  switch (status) {
    case Error:
      EM_TRACE(2, "\nEM_STATUS (QUERY)   :     -> subsystem status changed to \"Error\" by component \"%s\"!",
               name);
      break;
    case Warning:
      EM_TRACE(2,
               "\nEM_STATUS (QUERY)   :     -> subsystem status changed to \"Warning\" by component \"%s\"!",
               name);
      break;
    default:
      EM_TRACE(2, "\nEM_STATUS (QUERY)   :     -> subsystem status changed to \"OK\" by component \"%s\"!",
               name);
      break;
  }
}

}  // namespace

StatusValue CalculateSubsystemStatus(const StatusConfiguration& configuration,
                                     const SubsystemDefinition& subsystem,
                                     const std::vector<const ComponentState*>& answers) {
  EM_TRACE(3, "\n\nEM_STATUS (QUERY)   : Calculate status for subsystem \"%s\"...", subsystem.name.c_str());
  StatusValue status = NoStatus;
  for (std::size_t i = 0; i < answers.size(); ++i) {
    const std::string& name = subsystem.componentNames[i];
    EM_TRACE(3, "\n\nEM_STATUS (QUERY)   :   get status for component \"%s\" ---", name.c_str());
    if (answers[i] == nullptr) {
      EM_TRACE(4, "\nEM_STATUS (QUERY)   :     component not available in component map - ignored");
      continue;
    }
    const StatusValue component = answers[i]->found.status;
    EM_TRACE(3, "\nEM_STATUS (QUERY)   :     component \"%s\": status: %s (%d)", name.c_str(),
             configuration.StatusName(component), component);
    if (!RaisesSubsystem(component, status)) continue;
    status = component;
    TraceRaised(status, name);
  }
  EM_TRACE(4, "\nEM_STATUS (QUERY)   :   -> subsystem \"%s\" status = \"%s\"", subsystem.name.c_str(),
           configuration.StatusName(status));
  return status;
}

void RaiseSystemStatus(const StatusConfiguration& configuration, const SubsystemDefinition& subsystem,
                       StatusValue subsystemStatus, StatusValue& system) {
  if (subsystemStatus <= system) return;
  system = subsystemStatus;
  EM_TRACE(1, "\n\nEM_STATUS (QUERY)   :   -> system status changed to \"%s\" by subsystem \"%s\"!",
           configuration.StatusName(system), subsystem.name.c_str());
}

}  // namespace emstatus
