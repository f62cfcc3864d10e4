#include "data/Command.h"

#include <utility>

namespace emstatus {
namespace {

/// The value of a digit in any base up to 16, or 16.
std::uint32_t DigitOf(char character) {
  if (character >= '0' && character <= '9') return static_cast<std::uint32_t>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<std::uint32_t>(character - 'a' + 10);
  if (character >= 'A' && character <= 'F') return static_cast<std::uint32_t>(character - 'A' + 10);
  return 16;
}

std::uint32_t Digits(std::string_view text, std::uint32_t base) {
  std::uint32_t number = 0;
  for (const char character : text) {
    const std::uint32_t digit = DigitOf(character);
    if (digit >= base) break;
    number = number * base + digit;
  }
  return number;
}

std::uint32_t NumberFromText(std::string_view text) {
  if (text.size() < 2 || text[0] != '0') return Digits(text, 10);
  if (text.size() > 2 && (text[1] == 'x' || text[1] == 'X')) return Digits(text.substr(2), 16);
  return Digits(text.substr(1), 8);
}

const CommandValue* CurrentMember(const HostCommand& command, std::string_view key) noexcept {
  const CommandValue* current = CurrentCommand(command);
  return current != nullptr ? FindMember(*current, key) : nullptr;
}

}  // namespace

const CommandValue* CommandAt(const CommandValue& document, std::uint32_t index) noexcept {
  const auto commands = Elements(MemberOrEmpty(MemberOrEmpty(document, "SIP"), "CMD"));
  if (index >= commands.size() || KindOf(commands[index]) != CommandKind::Object) return nullptr;
  return &commands[index];
}

const CommandValue* CurrentCommand(const HostCommand& command) noexcept {
  return CommandAt(command.document, command.current);
}

CommandValue* EnsureCurrentCommand(HostCommand& command) {
  CommandValue* packet = FindMember(command.document, "SIP");
  CommandValue* commands = packet != nullptr ? FindMember(*packet, "CMD") : nullptr;
  CommandValue* current = commands != nullptr ? EnsureElement(*commands, command.current) : nullptr;
  return current != nullptr && KindOf(*current) == CommandKind::Object ? current : nullptr;
}

std::uint32_t GetInt(const HostCommand& command, std::string_view key, std::uint32_t fallback) noexcept {
  const CommandValue* member = CurrentMember(command, key);
  if (member == nullptr) return fallback;
  switch (KindOf(*member)) {
    case CommandKind::Number:
      return LowBits(*member);
    case CommandKind::String:
      return NumberFromText(TextOf(*member));
    default:
      return fallback;
  }
}

bool HasMember(const HostCommand& command, std::string_view key) noexcept {
  return CurrentMember(command, key) != nullptr;
}

const CommandValue& Data(const HostCommand& command) noexcept {
  const CommandValue* data = CurrentMember(command, "DA");
  return data != nullptr ? *data : EmptyValue();
}

CommandKind DataKind(const HostCommand& command) noexcept {
  return KindOf(Data(command));
}

bool IsDataStruct(const HostCommand& command) noexcept {
  const CommandValue& data = Data(command);
  return KindOf(data) == CommandKind::Object && FindMember(data, "RAW") == nullptr;
}

bool SetStatus(HostCommand& command, std::uint32_t status) {
  CommandValue* current = EnsureCurrentCommand(command);
  return current != nullptr && SetMember(*current, "ST", OwnedValue::UInt32(status));
}

bool SetData(HostCommand& command, OwnedValue data) {
  CommandValue* current = EnsureCurrentCommand(command);
  return current != nullptr && SetMember(*current, "DA", std::move(data)) &&
         SetMember(*current, "ST", OwnedValue::UInt32(0));
}

bool SetDataByte(HostCommand& command, std::uint8_t number) {
  return SetData(command, OwnedValue::UInt32(number));
}

bool SetDataWord(HostCommand& command, std::uint32_t number) {
  return SetData(command, OwnedValue::UInt32(number));
}

bool SetDataBoolean(HostCommand& command, bool truth) {
  return SetData(command, OwnedValue::Boolean(truth));
}

bool SetDataString(HostCommand& command, std::string_view text) {
  return SetData(command, OwnedValue::Text(text));
}

bool SetDataRaw(HostCommand& command, std::span<const std::uint8_t> bytes) {
  return SetData(command, OwnedValue::Raw(bytes));
}

}  // namespace emstatus
