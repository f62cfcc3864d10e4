#include "data/DataBytes.h"

#include <string_view>

#include "data/Command.h"
#include "data/CommandValue.h"

namespace emstatus {
namespace {

using Bytes = std::vector<std::uint8_t>;

void AppendText(Bytes& bytes, const CommandValue& value) {
  const std::string_view text = TextUpToZero(value);
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.push_back(0);
}

Bytes TextListBytes(const CommandValue& list) {
  Bytes bytes;
  const auto elements = Elements(list);
  if (elements.empty() || KindOf(elements.front()) != CommandKind::String) return bytes;
  for (const CommandValue& element : elements) AppendText(bytes, element);
  bytes.push_back(0);
  return bytes;
}

Bytes UnsignedBytes(std::uint64_t number) {
  const int width = number < 0x100 ? 1 : number < 0x10000 ? 2 : number <= 0xFFFFFFFF ? 4 : 8;
  Bytes bytes;
  for (int i = 0; i < width; ++i) bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
  return bytes;
}

}  // namespace

Bytes RawBytes(const CommandValue& value) {
  Bytes bytes;
  const auto elements = Elements(MemberOrEmpty(value, "RAW"));
  if (elements.empty() || (elements.front().tag & tagbit::kFitsUInt32) == 0) return bytes;
  bytes.reserve(elements.size());
  for (const CommandValue& element : elements) bytes.push_back(static_cast<std::uint8_t>(LowBits(element)));
  return bytes;
}

bool GetDataBytes(const CommandValue& document, std::uint32_t index, Bytes& bytes) {
  bytes.clear();
  const CommandValue* command = CommandAt(document, index);
  const CommandValue* data = command != nullptr ? FindMember(*command, "DA") : nullptr;
  if (data == nullptr) return false;
  switch (KindOf(*data)) {
    case CommandKind::Object:
      bytes = RawBytes(*data);
      return true;
    case CommandKind::Array:
      bytes = TextListBytes(*data);
      return true;
    case CommandKind::String:
      AppendText(bytes, *data);
      return true;
    case CommandKind::Number:
      if ((data->tag & (tagbit::kFitsUInt32 | tagbit::kFitsUInt64)) == 0) return false;
      bytes = UnsignedBytes((data->tag & tagbit::kFitsUInt32) != 0 ? LowBits(*data) : data->unsignedNumber);
      return true;
    default:
      return false;
  }
}

}  // namespace emstatus
