#include "tree/RequestHandler.h"

#include <algorithm>
#include <iterator>

#include "data/Command.h"
#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

/// Tells why a request could not even be given a status, where the reason is its index.
void TraceRefusedIndex(const HostCommand& command) {
  const CommandValue& commands = MemberOrEmpty(MemberOrEmpty(command.document, "SIP"), "CMD");
  if (KindOf(commands) != CommandKind::Array || command.current < Elements(commands).size()) return;
  EM_TRACE(1, "\nEM_STATUS (REQUEST) : ## ERROR! Command index %u is far beyond the %u commands - refused!",
           command.current, static_cast<unsigned>(Elements(commands).size()));
}

}  // namespace

constexpr RequestHandler::Operation RequestHandler::kOperations[] = {
    {0x2300, &RequestHandler::SubsystemCount},
    {0x2301, &RequestHandler::SubsystemStatus},
    {0x2302, &RequestHandler::SubsystemName},
    {0x2304, &RequestHandler::SubsystemDesignation},
    {0x2305, &RequestHandler::ComponentCount},
    {0x2306, &RequestHandler::ComponentStatusValue},
    {0x2307, &RequestHandler::ComponentName},
    {0x2308, &RequestHandler::ComponentDesignation},
    {0x2309, &RequestHandler::ConfirmCheck},
    {0x230A, &RequestHandler::ConfirmCommand},
    {0x230B, &RequestHandler::MapComponentStatus},
    {0x230F, &RequestHandler::SystemStatus},
    {0x2310, &RequestHandler::ComponentInstanceName},
    {0x2311, &RequestHandler::ComponentSource},
    {0x2312, &RequestHandler::ComponentRawValue},
    {0x2313, &RequestHandler::ComponentStatusText},
    {0x2314, &RequestHandler::MapComponentObjectStatus},
    {0x2320, &RequestHandler::InstanceCount},
    {0x2321, &RequestHandler::InstanceObjectName},
    {0x2322, &RequestHandler::InstanceStatus},
    {0x2323, &RequestHandler::InstanceObjectStatus},
    {0x2324, &RequestHandler::InstanceDesignation},
    {0x2330, &RequestHandler::NodeChildCount},
    {0x2331, &RequestHandler::NodeChild},
    {0x2332, &RequestHandler::NodeParent},
    {0x2333, &RequestHandler::NodeStatus},
    {0x2334, &RequestHandler::NodeCssStatus},
    {0x2335, &RequestHandler::NodeDesignation},
    {0x2336, &RequestHandler::NodeObjectStatus},
    {0x2337, &RequestHandler::NodeAssociationKey},
    {0x2338, &RequestHandler::NodeIsCss},
    {0x2339, &RequestHandler::WholeTree},
};

const RequestHandler::Operation* RequestHandler::FindOperation(std::uint32_t code) {
  static_assert(std::ranges::is_sorted(kOperations, std::ranges::less_equal{}, &Operation::code),
                "in order, each code once");
  const auto* operation = std::ranges::lower_bound(kOperations, code, {}, &Operation::code);
  return operation != std::end(kOperations) && operation->code == code ? operation : nullptr;
}

bool RequestHandler::OnRequest(HostCommand& command) const {
  const std::uint32_t code = GetInt(command, "OC", 0);
  const Operation* operation = FindOperation(code);
  if (!SetStatus(command, operation == nullptr ? answer::kNotHandled : answer::kOpen)) {
    TraceRefusedIndex(command);
    return false;
  }
  if (operation == nullptr) return false;
  Request request{command,
                  code,
                  GetInt(command, "OE", 0),
                  GetInt(command, "OI", 0),
                  GetInt(command, "CA", 0),
                  configuration_.Get(),
                  tree_.Current()};
  (this->*operation->handle)(request);
  return true;
}

const SubsystemDefinition* RequestHandler::SubsystemOf(const Request& request) {
  const auto& subsystems = request.configuration->subsystems;
  return request.extension < subsystems.size() ? &subsystems[request.extension] : nullptr;
}

RequestHandler::Component RequestHandler::ComponentAt(const Request& request, std::uint32_t subsystem,
                                                      std::uint32_t component) {
  static const ComponentStatus kNothingFound;
  const ComponentDefinition* definition = request.configuration->ComponentAt(subsystem, component);
  if (definition == nullptr) return {nullptr, nullptr};
  const auto found = request.scan->components.find(definition->name);
  return {definition, found == request.scan->components.end() ? &kNothingFound : &found->second};
}

RequestHandler::Component RequestHandler::ComponentOf(const Request& request) {
  return ComponentAt(request, request.extension, request.object);
}

void RequestHandler::SubsystemCount(Request& request) const {
  SetDataByte(request.command, static_cast<std::uint8_t>(request.configuration->subsystems.size()));
}

void RequestHandler::SubsystemStatus(Request& request) const {
  const SubsystemDefinition* subsystem = SubsystemOf(request);
  if (subsystem == nullptr) return;
  const auto status = request.scan->subsystems.find(subsystem->name);
  SetDataByte(request.command, status == request.scan->subsystems.end() ? NoStatus : status->second);
}

void RequestHandler::SubsystemName(Request& request) const {
  if (const auto* subsystem = SubsystemOf(request)) SetDataString(request.command, subsystem->name);
}

void RequestHandler::SubsystemDesignation(Request& request) const {
  if (const auto* subsystem = SubsystemOf(request)) SetDataString(request.command, subsystem->displayName);
}

void RequestHandler::ComponentCount(Request& request) const {
  if (const auto* subsystem = SubsystemOf(request)) {
    SetDataByte(request.command, static_cast<std::uint8_t>(subsystem->componentNames.size()));
  }
}

void RequestHandler::ComponentStatusValue(Request& request) const {
  const Component component = ComponentOf(request);
  if (component.definition != nullptr) SetDataByte(request.command, component.found->status);
}

void RequestHandler::ComponentName(Request& request) const {
  const Component component = ComponentOf(request);
  if (component.definition != nullptr) SetDataString(request.command, component.definition->name);
}

void RequestHandler::ComponentDesignation(Request& request) const {
  const Component component = ComponentOf(request);
  if (component.definition != nullptr) SetDataString(request.command, component.Designation());
}

void RequestHandler::SystemStatus(Request& request) const {
  SetDataByte(request.command, request.scan->system);
}

void RequestHandler::ComponentInstanceName(Request& request) const {
  const Component component = ComponentOf(request);
  if (component.definition != nullptr) SetDataString(request.command, component.definition->instanceName);
}

void RequestHandler::ComponentSource(Request& request) const {
  const Component component = ComponentOf(request);
  if (component.definition != nullptr) SetDataString(request.command, component.definition->source);
}

void RequestHandler::ComponentRawValue(Request& request) const {
  const Component component = ComponentOf(request);
  if (component.definition == nullptr) return;
  SetDataWord(request.command, static_cast<std::uint32_t>(component.found->rawValue));
}

void RequestHandler::ComponentStatusText(Request& request) const {
  const Component component = ComponentOf(request);
  if (component.definition != nullptr) SetDataString(request.command, component.found->statusText);
}

}  // namespace emstatus
