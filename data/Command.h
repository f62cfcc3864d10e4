#pragma once

#include <emstatus/HostCommand.h>

#include <cstdint>
#include <span>
#include <string_view>

#include "data/CommandValue.h"

/// Reading and answering of host commands. Reading never fails and never throws: what is missing or of the
/// wrong kind falls back to a default. Writing operations answer false when the document has no place for
/// the command ("SIP" is no object, "CMD" no array, the element no object, the index far beyond the end)
/// and then change no command; they throw std::bad_alloc when memory runs out. [the command's thread]
namespace emstatus {

/// "ST" of a command that has none.
inline constexpr std::uint32_t kStatusAbsent = 22;

/// The command at `index` of a document; nullptr when there is none or it is no object.
const CommandValue* CommandAt(const CommandValue& document, std::uint32_t index) noexcept;

/// The command being handled; nullptr when there is none or it is no object.
const CommandValue* CurrentCommand(const HostCommand& command) noexcept;

/// The command being handled, for writing: empty objects are appended until it exists. nullptr when the
/// document has no place for it.
CommandValue* EnsureCurrentCommand(HostCommand& command);

/// A member of the current command as an unsigned number: the low 32 bits of a number, or the text of a
/// string as hexadecimal ("0x1F"), octal ("017") or decimal digits, as far as they go (modulo 2^32; 0 when
/// there are none). `fallback` for anything else.
std::uint32_t GetInt(const HostCommand& command, std::string_view key, std::uint32_t fallback) noexcept;

bool HasMember(const HostCommand& command, std::string_view key) noexcept;

/// The current command's "DA"; EmptyValue() when it has none.
const CommandValue& Data(const HostCommand& command) noexcept;

/// The kind of the current command's "DA", Null when it has none.
CommandKind DataKind(const HostCommand& command) noexcept;

/// Whether "DA" is an object that is not raw bytes.
bool IsDataStruct(const HostCommand& command) noexcept;

/// Sets "ST", replacing one that is there.
bool SetStatus(HostCommand& command, std::uint32_t status);

/// Sets "DA", and "ST" to 0. The typed forms below do the same.
bool SetData(HostCommand& command, OwnedValue data);
bool SetDataByte(HostCommand& command, std::uint8_t number);
bool SetDataWord(HostCommand& command, std::uint32_t number);
bool SetDataBoolean(HostCommand& command, bool truth);
/// Copies the text.
bool SetDataString(HostCommand& command, std::string_view text);
bool SetDataRaw(HostCommand& command, std::span<const std::uint8_t> bytes);

}  // namespace emstatus
