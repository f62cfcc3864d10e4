#include "status/StatusEvents.h"

#include <utility>

#include "data/Command.h"
#include "platform/CDebugClient.h"
#include "status/HostLink.h"
#include "status/HostOperations.h"

namespace emstatus {

void InstanceEvents::Add(const StatusConfiguration& configuration, const std::string& componentName,
                         const ComponentPosition& position, const ComponentInstance& instance) {
  EM_TRACE(
      2,
      "\n\nEM_STATUS (REQUEST) : ## Component \"%s\" instance status changed to %s (subsys=%d, component=%d, instance index=%d, cab=%d)",
      componentName.c_str(), configuration.StatusName(instance.status), static_cast<int>(position.subsystem),
      static_cast<int>(position.component), static_cast<int>(instance.index),
      static_cast<int>(instance.cabinet));
  EM_TRACE(2, "\n                    :   -> put CM_StatusTreeComponentInstanceStatus event into event queue");
  OwnedCommand& event = queue_.emplace_back(
      CommandAddress{.operation = operation::kInstanceStatusEvent,
                     .extension = position.subsystem << 16 | (position.component & 0xFFFF),
                     .object = instance.index,
                     .cabinet = instance.cabinet});
  event.AddData(OwnedValue::UInt32(instance.status));
}

void InstanceEvents::Fire(HostLink& host) {
  for (OwnedCommand& event : std::exchange(queue_, {})) {
    const std::uint32_t position = GetInt(event, "OE", 0);
    EM_TRACE(
        2,
        "\nEM_STATUS (REQUEST) : Fire CM_StatusTreeComponentInstanceStatus event: subsys=%d, comp=%d, inst=%d, status=%d",
        static_cast<int>(position >> 16), static_cast<int>(position & 0xFFFF),
        static_cast<int>(GetInt(event, "OI", 0)), static_cast<int>(GetInt(event, "DA", 0)));
    host.SendEvent(event);
    EM_TRACE(3, "\nEM_STATUS (REQUEST) : CM_StatusTreeComponentInstanceStatus event fired");
  }
}

void FireSystemStatus(HostLink& host, StatusValue status) {
  OwnedCommand event({.operation = operation::kSystemStatusEvent, .cabinet = host.ServerCabinet()});
  event.AddData(OwnedValue::UInt32(status));
  SetStatus(event, 0);
  host.SendEvent(event);
}

}  // namespace emstatus
