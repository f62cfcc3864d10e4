#include "data/Command.h"
#include "platform/CDebugClient.h"
#include "tree/RequestHandler.h"

namespace emstatus {

RequestHandler::Component RequestHandler::ComponentOfInstances(Request& request) {
  const std::uint32_t subsystem = request.extension >> 16;
  const std::uint32_t position = request.extension & 0xFFFF;
  EM_TRACE(3, "\nEM_STATUS (REQUEST) : CM_StatusTree command - OpCode 0x%04X, subsys=%d, comp=%d, inst=%d",
           request.operation, static_cast<int>(subsystem), static_cast<int>(position),
           static_cast<int>(request.object));
  const Component component = ComponentAt(request, subsystem, position);
  if (component.definition == nullptr) {
    EM_TRACE(
        2,
        "\nEM_STATUS (REQUEST) : ## ERROR in cmd 0x%04X: Illegal subsystem or component index supplied: subsys=%d, comp=%d!",
        request.operation, static_cast<int>(subsystem), static_cast<int>(position));
    SetStatus(request.command, answer::kBadParameter);
    return component;
  }
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   component = \"%s\"", component.definition->name.c_str());
  return component;
}

const ComponentInstance* RequestHandler::FindInstance(Request& request) {
  const Component component = ComponentOfInstances(request);
  if (component.definition == nullptr) return nullptr;
  const auto& instances = component.found->instances;
  const auto instance = instances.find(InstanceKey(request.cabinet, request.object));
  if (instance != instances.end()) return &instance->second;
  EM_TRACE(
      2,
      "\nEM_STATUS (REQUEST) : ## ERROR in cmd 0x%04X: Instance for CabinetNr=%d and ObjectId=%d not found: %d!",
      request.operation, static_cast<int>(request.cabinet), static_cast<int>(request.object),
      static_cast<int>(instances.size()));
  SetStatus(request.command, answer::kBadParameter);
  return nullptr;
}

void RequestHandler::InstanceCount(Request& request) const {
  const Component component = ComponentOfInstances(request);
  if (component.definition == nullptr) return;
  const auto count = static_cast<std::uint32_t>(component.found->instances.size());
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   -> number of instances=%d", static_cast<int>(count));
  SetDataWord(request.command, count);
}

void RequestHandler::InstanceObjectName(Request& request) const {
  const ComponentInstance* instance = FindInstance(request);
  if (instance == nullptr) return;
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   -> instance object name = \"%s\"", instance->instanceId.c_str());
  SetDataString(request.command, instance->instanceId);
}

void RequestHandler::InstanceStatus(Request& request) const {
  const ComponentInstance* instance = FindInstance(request);
  if (instance == nullptr) return;
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   -> instance mapped status = %d", instance->status);
  SetDataByte(request.command, instance->status);
}

void RequestHandler::InstanceObjectStatus(Request& request) const {
  const ComponentInstance* instance = FindInstance(request);
  if (instance == nullptr) return;
  const std::uint32_t raw = instance->rawValue;
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   -> instance object status = 0x%02X", raw);
  const std::uint8_t bytes[] = {static_cast<std::uint8_t>(raw), static_cast<std::uint8_t>(raw >> 8),
                                static_cast<std::uint8_t>(raw >> 16), static_cast<std::uint8_t>(raw >> 24)};
  SetDataRaw(request.command, bytes);
}

void RequestHandler::InstanceDesignation(Request& request) const {
  const ComponentInstance* instance = FindInstance(request);
  if (instance == nullptr) return;
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   -> instance designation = \"%s\"", instance->designation.c_str());
  SetDataString(request.command, instance->designation);
}

}  // namespace emstatus
