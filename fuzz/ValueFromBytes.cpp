#include "fuzz/ValueFromBytes.h"

#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

#include "data/Command.h"

namespace emstatus::fuzz {
namespace {

constexpr int kDeepest = 8;

/// As a host writes a value: payload and tag, whatever they are.
OwnedValue Bits(std::uint32_t tag, std::uint64_t payload) {
  CommandValue value{};
  value.unsignedNumber = payload;
  value.tag = tag;
  return OwnedValue::Adopt(value);
}

/// A tag of that kind with bits of any meaning above it, except for the one that passes a text on.
std::uint32_t AnyTag(ByteSource& source, CommandKind kind) {
  const std::uint32_t tag = (source.Number<std::uint32_t>() << 8) | static_cast<std::uint32_t>(kind);
  return tag == tag::kOwnedString ? tag::kConstantString : tag;
}

/// Storage of just the entries that are there, which may say less of its capacity.
template <typename Entry>
Entry* Storage(const std::vector<Entry>& entries) {
  if (entries.empty()) return nullptr;
  auto* storage = static_cast<Entry*>(std::malloc(entries.size() * sizeof(Entry)));
  if (storage == nullptr) throw std::bad_alloc();
  std::copy(entries.begin(), entries.end(), storage);
  return storage;
}

OwnedValue ArrayOf(const std::vector<CommandValue>& elements, std::uint32_t tag = tag::kArray,
                   bool tellsCapacity = true) {
  const auto count = static_cast<std::uint32_t>(elements.size());
  CommandValue value{};
  value.array = {Storage(elements), count, tellsCapacity ? count : 0};
  value.tag = tag;
  return OwnedValue::Adopt(value);
}

OwnedValue ObjectOf(const std::vector<CommandMember>& members, std::uint32_t tag = tag::kObject,
                    bool tellsCapacity = true) {
  const auto count = static_cast<std::uint32_t>(members.size());
  CommandValue value{};
  value.object = {Storage(members), count, tellsCapacity ? count : 0};
  value.tag = tag;
  return OwnedValue::Adopt(value);
}

OwnedValue AnyValue(ByteSource& source, int depth);

OwnedValue AnyName(ByteSource& source, int depth) {
  constexpr const char* kNames[] = {"SIP", "CMD", "OC", "OE", "OI", "CA", "MI", "ST", "DA", "RAW"};
  const std::uint32_t form = source.Below(12);
  if (form < std::size(kNames)) return OwnedValue::Constant(kNames[form]);
  return form == 10 ? OwnedValue::Text(source.Text()) : AnyValue(source, depth);
}

OwnedValue AnyArray(ByteSource& source, int depth) {
  const std::uint8_t form = source.Byte();
  const std::uint32_t tag = (form & 0x80) != 0 ? AnyTag(source, CommandKind::Array) : tag::kArray;
  std::vector<CommandValue> elements;
  for (int left = form & 0x1F; left > 0 && !source.IsEmpty(); --left) {
    elements.push_back(AnyValue(source, depth + 1).release());
  }
  return ArrayOf(elements, tag, (form & 0x40) == 0);
}

OwnedValue AnyObject(ByteSource& source, int depth) {
  const std::uint8_t form = source.Byte();
  const std::uint32_t tag = (form & 0x80) != 0 ? AnyTag(source, CommandKind::Object) : tag::kObject;
  std::vector<CommandMember> members;
  for (int left = form & 0x1F; left > 0 && !source.IsEmpty(); --left) {
    const CommandValue name = AnyName(source, depth + 1).release();
    members.push_back({name, AnyValue(source, depth + 1).release()});
  }
  return ObjectOf(members, tag, (form & 0x40) == 0);
}

OwnedValue RawFrom(ByteSource& source) {
  std::vector<CommandValue> numbers;
  for (const char byte : source.Text()) {
    numbers.push_back(OwnedValue::UInt32(static_cast<std::uint8_t>(byte)).release());
  }
  return ObjectOf({{OwnedValue::Constant("RAW").release(), ArrayOf(numbers).release()}});
}

OwnedValue Nested(ByteSource& source, int depth) {
  std::uint32_t levels = source.Number<std::uint16_t>() & 0x7FF;
  const bool asArrays = source.Flag();
  OwnedValue value = AnyValue(source, depth + 1);
  for (; levels > 0; --levels) {
    value = asArrays ? ArrayOf({value.release()})
                     : ObjectOf({{OwnedValue::Constant("DA").release(), value.release()}});
  }
  return value;
}

/// A container or a text that tells of contents but has none.
OwnedValue WithoutStorage(ByteSource& source) {
  const auto kind = static_cast<CommandKind>(3 + source.Below(3));
  CommandValue value{};
  value.array = {nullptr, source.Number<std::uint32_t>(), source.Number<std::uint32_t>()};
  value.tag = AnyTag(source, kind);
  return OwnedValue::Adopt(value);
}

OwnedValue ConstantText(ByteSource& source) {
  constexpr std::string_view kTexts[] = {"", "0x2339", "root", "S1", "A", "0", "255", {"\0a", 2}};
  OwnedValue value = OwnedValue::Reference(kTexts[source.Below(std::size(kTexts))]);
  if (source.Flag()) value.tag = AnyTag(source, CommandKind::String);
  return value;
}

OwnedValue AnyValue(ByteSource& source, int depth) {
  switch (depth > kDeepest ? 6 : source.Below(16)) {
    case 0:
      return OwnedValue();
    case 1:
      return OwnedValue::Boolean(source.Flag());
    case 2:
      return AnyObject(source, depth);
    case 3:
      return AnyArray(source, depth);
    case 4:
      return OwnedValue::Text(source.Text());
    case 5:
      return ConstantText(source);
    case 6:
      return OwnedValue::UInt32(source.Byte());
    case 7:
      return OwnedValue::Integer(source.Number<std::int64_t>());
    case 8:
      return OwnedValue::Double(source.Number<double>());
    case 9:
      return Bits(AnyTag(source, CommandKind::Number), source.Number<std::uint64_t>());
    case 10:
      return Nested(source, depth);
    case 11:
      return RawFrom(source);
    case 12: {
      const auto kind = static_cast<CommandKind>(7 + source.Below(249));
      return Bits(AnyTag(source, kind), source.Number<std::uint64_t>());
    }
    case 13:
      return WithoutStorage(source);
    case 14:
      return OwnedValue::UInt32(source.Number<std::uint32_t>());
    default:
      return OwnedValue::Integer(-static_cast<std::int64_t>(source.Byte()));
  }
}

/// Mostly a number of one byte.
OwnedValue Parameter(ByteSource& source) {
  const std::uint8_t form = source.Byte();
  return form < 0xF0 ? OwnedValue::UInt32(form) : AnyValue(source, 2);
}

/// Mostly one of the status-tree operations or of the replies that are looked at.
OwnedValue Operation(ByteSource& source) {
  constexpr std::uint32_t kReplies[] = {0x1801, 0x21DE, 0xE001, 0xE002};
  const std::uint8_t form = source.Byte();
  if (form < 0x80) return OwnedValue::UInt32(0x2300U + form);
  return form < 0xF0 ? OwnedValue::UInt32(kReplies[form % std::size(kReplies)]) : AnyValue(source, 2);
}

OwnedValue AnyCommand(ByteSource& source) {
  std::vector<CommandMember> members;
  const auto add = [&members](const char* name, OwnedValue value) {
    members.push_back({OwnedValue::Constant(name).release(), value.release()});
  };
  const std::uint8_t present = source.Byte();
  add("OC", Operation(source));
  if ((present & 1) != 0) add("OE", Parameter(source));
  if ((present & 2) != 0) add("OI", Parameter(source));
  if ((present & 4) != 0) add("CA", Parameter(source));
  if ((present & 8) != 0) add("DA", AnyValue(source, 1));
  if ((present & 16) != 0) add("ST", Parameter(source));
  if ((present & 32) != 0) add("MI", Parameter(source));
  if ((present & 64) != 0) {
    const CommandValue name = AnyName(source, 2).release();
    members.push_back({name, AnyValue(source, 2).release()});
  }
  return ObjectOf(members, tag::kObject, (present & 128) == 0);
}

OwnedValue AnyDocument(ByteSource& source, std::uint32_t count) {
  std::vector<CommandValue> commands;
  for (; count > 0; --count) commands.push_back(AnyCommand(source).release());
  const CommandValue packet =
      ObjectOf({{OwnedValue::Constant("CMD").release(), ArrayOf(commands).release()}}).release();
  return ObjectOf({{OwnedValue::Constant("SIP").release(), packet}});
}

}  // namespace

OwnedValue ValueFromBytes(ByteSource& source) {
  return AnyValue(source, 0);
}

OwnedCommand CommandFromBytes(ByteSource& source) {
  const std::uint8_t form = source.Byte();
  const std::uint32_t count = form % 4;
  OwnedCommand command;
  Assign(command.document, form >= 0xE0 ? ValueFromBytes(source) : AnyDocument(source, count));
  command.current = (form & 0x10) != 0 ? source.Number<std::uint32_t>() : 0;
  return command;
}

void AnswerFromBytes(ByteSource& source, HostCommand& command) {
  const std::uint8_t form = source.Byte();
  if (form >= 0xF8) {
    OwnedCommand other = CommandFromBytes(source);
    std::swap<HostCommand>(command, other);
  } else if (form >= 0xE0) {
    if (CommandValue* current = EnsureCurrentCommand(command)) {
      SetMember(*current, "DA", ValueFromBytes(source));
      SetMember(*current, "ST", ValueFromBytes(source));
    }
  } else if (form >= 0xC0) {
    SetStatus(command, form & 0x1F);
  } else if (form >= 0x80) {
    SetDataString(command, source.Text());
  } else {
    SetDataWord(command, form < 0x70 ? form % 8U : source.Number<std::uint32_t>());
  }
}

}  // namespace emstatus::fuzz
