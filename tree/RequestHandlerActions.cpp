#include <algorithm>
#include <vector>

#include "data/Command.h"
#include "data/DataBytes.h"
#include "platform/CDebugClient.h"
#include "tree/RequestHandler.h"

namespace emstatus {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// The data of the current command as bytes; empty when there is none or it has no byte form.
Bytes RequestBytes(const HostCommand& command) {
  Bytes bytes;
  if (!GetDataBytes(command.document, command.current, bytes)) bytes.clear();
  return bytes;
}

void AppendWord(Bytes& bytes, std::uint32_t word) {
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(word >> shift));
}

StatusValue MapObjectStatus(const ComponentDefinition& component, std::uint8_t objectStatus) {
  const StatusValue status = component.Map(objectStatus).status;
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   map object status %d to component status %d", objectStatus, status);
  return status;
}

}  // namespace

const ComponentDefinition* RequestHandler::ConfirmedComponent(Request& request) const {
  const Component component = ComponentOf(request);
  if (component.definition == nullptr) {
    EM_TRACE(1, "\nEM_STATUS (REQUEST) : ## ERROR! Component at subsystem=%d, component=%d does not exist.",
             static_cast<int>(request.extension), static_cast<int>(request.object));
    SetStatus(request.command, answer::kBadParameter);
    return nullptr;
  }
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   component = \"%s\" (%s)", component.Designation().c_str(),
           component.definition->name.c_str());
  return component.definition;
}

void RequestHandler::ConfirmCheck(Request& request) const {
  EM_TRACE(3, "\nEM_STATUS (REQUEST) : Component signal confirm check for subsystem=%d, component=%d",
           static_cast<int>(request.extension), static_cast<int>(request.object));
  const ComponentDefinition* component = ConfirmedComponent(request);
  if (component == nullptr) return;
  const bool supported = component->statusConfirm.IsDefined();
  if (supported) {
    EM_TRACE(3, "\nEM_STATUS (REQUEST) :   -> signal confirm is supported");
  } else {
    EM_TRACE(3, "\nEM_STATUS (REQUEST) :   -> signal confirm is not supported");
  }
  SetDataByte(request.command, supported);
}

void RequestHandler::ConfirmCommand(Request& request) const {
  EM_TRACE(3, "\nEM_STATUS (REQUEST) : Component signal confirm command subsystem=%d, component=%d",
           static_cast<int>(request.extension), static_cast<int>(request.object));
  const ComponentDefinition* component = ConfirmedComponent(request);
  if (component == nullptr) return;
  if (!component->statusConfirm.IsDefined()) {
    EM_TRACE(2, "\nEM_STATUS (REQUEST) : ## WARNING! Component signal confirm is not supported.");
    SetStatus(request.command, answer::kNotHandled);
    return;
  }
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   send confirm command: %s", component->statusConfirm.text.c_str());
  if (!sendConfirm_(component->statusConfirm)) {
    EM_TRACE(2, "\nEM_STATUS (REQUEST) : ## WARNING! Failed to send component signal confirm command.");
    SetStatus(request.command, answer::kFailed);
    return;
  }
  SetStatus(request.command, answer::kSuccess);
  EM_TRACE(
      3,
      "\nEM_STATUS (REQUEST) :   confirm command successfully sent, wakeup polling loop to immendiately update status...");
  wakeUp_.Set();
}

void RequestHandler::MapComponentStatus(Request& request) const {
  constexpr std::size_t kWordLength = 4;
  constexpr std::size_t kShortest = kWordLength + 1;
  const Bytes bytes = RequestBytes(request.command);
  if (bytes.size() < kShortest) {
    EM_TRACE(
        2,
        "\nEM_STATUS (REQUEST) : ## ERROR in CM_StatusTreeMapComponentStatus: illegal command data (is %d, should be >= %d)",
        static_cast<int>(bytes.size()), static_cast<int>(kShortest));
    SetStatus(request.command, answer::kBadParameter);
    return;
  }
  const std::uint8_t rawValue = bytes[0];
  const auto nameEnd = std::find(bytes.begin() + kWordLength, bytes.end(), 0);
  const std::string name(bytes.begin() + kWordLength, nameEnd);
  EM_TRACE(3, "\nEM_STATUS (REQUEST) : CM_StatusTreeMapComponentStatus - component = \"%s\", status=%d",
           name.c_str(), rawValue);
  const ComponentDefinition* component = request.configuration->FindComponent(name);
  if (component == nullptr) {
    EM_TRACE(
        2, "\nEM_STATUS (REQUEST) : ## ERROR in CM_StatusTreeMapComponentStatus: Unknown component name: %s!",
        name.c_str());
    SetStatus(request.command, answer::kBadParameter);
    return;
  }
  Bytes reply;
  AppendWord(reply, rawValue);
  AppendWord(reply, MapObjectStatus(*component, rawValue));
  reply.insert(reply.end(), name.begin(), name.end());
  reply.push_back(0);
  SetDataRaw(request.command, reply);
}

void RequestHandler::MapComponentObjectStatus(Request& request) const {
  const Component component = ComponentOf(request);
  if (component.definition == nullptr) {
    EM_TRACE(
        2,
        "\nEM_STATUS (REQUEST) : ## ERROR in CM_StatusTreeMapComponentObjectStatus: Illegal subsystem or component index supplied: subsys=%d, comp=%d!",
        static_cast<int>(request.extension), static_cast<int>(request.object));
    SetStatus(request.command, answer::kBadParameter);
    return;
  }
  const Bytes bytes = RequestBytes(request.command);
  if (bytes.empty()) {
    EM_TRACE(
        2,
        "\nEM_STATUS (REQUEST) : ## ERROR in CM_StatusTreeMapComponentObjectStatus: Missing command request data");
    SetStatus(request.command, answer::kBadParameter);
    return;
  }
  EM_TRACE(3, "\nEM_STATUS (REQUEST) : CM_StatusTreeMapComponentObjectStatus - component = \"%s\"",
           component.definition->name.c_str());
  Bytes reply;
  AppendWord(reply, bytes[0]);
  AppendWord(reply, MapObjectStatus(*component.definition, bytes[0]));
  SetDataRaw(request.command, reply);
}

}  // namespace emstatus
