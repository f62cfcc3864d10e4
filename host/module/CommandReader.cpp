#include "host/module/CommandReader.h"

#include "host/module/CommandJson.h"

namespace emstatus::host {

const CommandValue* CurrentCommand(const HostCommand& command) {
  const CommandValue* sip = FindMember(command.document, "SIP");
  const CommandValue* list = sip == nullptr ? nullptr : FindMember(*sip, "CMD");
  if (list == nullptr || CommandKind(list->tag & 0xFF) != CommandKind::Array ||
      command.current >= list->array.count) {
    return nullptr;
  }
  const CommandValue* element = &list->array.elements[command.current];
  return CommandKind(element->tag & 0xFF) == CommandKind::Object ? element : nullptr;
}

std::uint32_t ReadNumber(const HostCommand& command, std::string_view name, std::uint32_t otherwise) {
  const CommandValue* current = CurrentCommand(command);
  const CommandValue* member = current == nullptr ? nullptr : FindMember(*current, name);
  const bool isNumber = member != nullptr && CommandKind(member->tag & 0xFF) == CommandKind::Number;
  return isNumber ? std::uint32_t(member->unsignedNumber) : otherwise;
}

std::optional<nlohmann::json> ReadData(const HostCommand& command) {
  const CommandValue* current = CurrentCommand(command);
  const CommandValue* data = current == nullptr ? nullptr : FindMember(*current, "DA");
  return data == nullptr ? std::nullopt : std::optional(ToJson(*data));
}

Request ReadRequest(const HostCommand& command) {
  Request request;
  request.code = ReadNumber(command, "OC", 0);
  request.extension = ReadNumber(command, "OE", 0);
  request.object = ReadNumber(command, "OI", 0);
  request.cabinet = ReadNumber(command, "CA", 0);
  request.data = ReadData(command);
  return request;
}

std::optional<std::uint32_t> NumberOf(const std::optional<nlohmann::json>& data) {
  if (data && data->is_number_integer()) {
    return std::uint32_t(data->get<std::int64_t>());
  }
  const bool raw = data && data->is_object() && data->contains("RAW") && (*data)["RAW"].is_array();
  if (!raw) {
    return std::nullopt;
  }
  std::uint32_t number = 0;
  unsigned shift = 0;
  for (const auto& byte : (*data)["RAW"]) {
    if (shift < 32 && byte.is_number_integer()) {
      number |= (byte.get<std::uint32_t>() & 0xFFU) << shift;
    }
    shift += 8;
  }
  return number;
}

bool WriteAnswer(HostCommand& command, const Answer& answer) {
  auto* current = const_cast<CommandValue*>(CurrentCommand(command));
  if (current == nullptr) {
    return false;
  }
  SetMember(*current, "ST", MakeValue(answer.status));
  if (answer.data) {
    SetMember(*current, "DA", MakeValue(*answer.data));
  } else if (FindMember(*current, "DA") != nullptr) {
    SetMember(*current, "DA", MakeValue(nullptr));
  }
  return true;
}

}  // namespace emstatus::host
