#include "data/CommandReply.h"

#include <vector>

#include "data/Command.h"
#include "data/DataBytes.h"

namespace emstatus {
namespace {

bool IsCompleted(std::uint32_t status) {
  return status == 0 || status == 12 || status == 21 || status == 255;
}

/// One and two bytes are the number itself; of any other count the first four are, absent ones being 0.
std::int32_t LittleEndian(const std::vector<std::uint8_t>& bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < bytes.size() && i < 4; ++i) number |= std::uint32_t{bytes[i]} << (8 * i);
  return static_cast<std::int32_t>(number);
}

}  // namespace

Reply ReadReply(const HostCommand& command) {
  Reply reply;
  reply.status = GetInt(command, "ST", kStatusAbsent);
  reply.completed = IsCompleted(reply.status);
  if (!reply.completed) return reply;
  const CommandValue& data = Data(command);
  switch (KindOf(data)) {
    case CommandKind::Number:
      reply.number = static_cast<std::int32_t>(LowBits(data));
      break;
    case CommandKind::Object:
      if (!IsDataStruct(command)) reply.number = LittleEndian(RawBytes(data));
      break;
    case CommandKind::String:
      reply.text = TextUpToZero(data);
      break;
    default:
      break;
  }
  return reply;
}

}  // namespace emstatus
