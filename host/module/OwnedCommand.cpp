#include "host/module/OwnedCommand.h"

#include "host/module/CommandJson.h"

namespace emstatus::host {
namespace {

HostCommand Build(const Request& request, std::optional<std::uint32_t> status) {
  CommandValue current = MakeValue(nlohmann::json::object());
  SetMember(current, "OC", MakeValue(request.code));
  SetMember(current, "OE", MakeValue(request.extension));
  SetMember(current, "OI", MakeValue(request.object));
  SetMember(current, "CA", MakeValue(request.cabinet));
  if (status) {
    SetMember(current, "ST", MakeValue(*status));
  }
  if (request.data) {
    SetMember(current, "DA", MakeValue(*request.data));
  }
  HostCommand command{MakeValue(nlohmann::json{{"SIP", {{"CMD", nlohmann::json::array({nullptr})}}}}), 0};
  const CommandValue* list = FindMember(*FindMember(command.document, "SIP"), "CMD");
  list->array.elements[0] = current;
  return command;
}

}  // namespace

OwnedCommand::OwnedCommand(const Request& request) : command_(Build(request, std::nullopt)) {}

OwnedCommand::OwnedCommand(const Request& request, std::uint32_t status) : command_(Build(request, status)) {}

OwnedCommand::~OwnedCommand() {
  ReleaseValue(command_.document);
}

}  // namespace emstatus::host
