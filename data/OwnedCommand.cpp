#include "data/OwnedCommand.h"

#include <utility>

#include "data/Command.h"

namespace emstatus {
namespace {

OwnedValue DocumentWith(OwnedValue command) {
  OwnedValue commands = OwnedValue::Array();
  Append(commands, std::move(command));
  OwnedValue packet = OwnedValue::Object();
  AddMember(packet, "CMD", std::move(commands));
  OwnedValue document = OwnedValue::Object();
  AddMember(document, "SIP", std::move(packet));
  return document;
}

OwnedValue CommandFor(const CommandAddress& address) {
  OwnedValue command = OwnedValue::Object();
  AddMember(command, "OC", OwnedValue::UInt32(address.operation));
  AddMember(command, "OE", OwnedValue::UInt32(address.extension));
  AddMember(command, "OI", OwnedValue::UInt32(address.object));
  AddMember(command, "CA", OwnedValue::UInt32(address.cabinet));
  return command;
}

}  // namespace

OwnedCommand::OwnedCommand() : HostCommand{DocumentWith(OwnedValue::Object()).release(), 0} {}

OwnedCommand::OwnedCommand(const CommandAddress& address)
    : HostCommand{DocumentWith(CommandFor(address)).release(), 0} {}

OwnedCommand::OwnedCommand(OwnedCommand&& other) noexcept
    : HostCommand(std::exchange<HostCommand>(other, HostCommand{})) {}

OwnedCommand& OwnedCommand::operator=(OwnedCommand&& other) noexcept {
  OwnedCommand taken(std::move(other));
  std::swap<HostCommand>(*this, taken);
  return *this;
}

OwnedCommand::~OwnedCommand() {
  Release(document);
}

OwnedCommand& OwnedCommand::AddData(OwnedValue data) {
  CommandValue* command = EnsureCurrentCommand(*this);
  if (command != nullptr) SetMember(*command, "DA", std::move(data));
  return *this;
}

}  // namespace emstatus
