#include "module/CommandTrace.h"

#include <cstdio>
#include <vector>

#include "data/Command.h"
#include "data/DataBytes.h"
#include "data/JsonWriter.h"
#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

/// The addresses and the status of a command; the cabinet only where there is one.
std::string Head(const HostCommand& command) {
  const std::uint32_t operation = GetInt(command, "OC", 0) & 0xFFFF;
  const std::uint32_t extension = GetInt(command, "OE", 0) & 0xFFFF;
  const std::uint32_t object = GetInt(command, "OI", 0) & 0xFFFF;
  const std::uint32_t module = GetInt(command, "MI", 0);
  const std::uint32_t status = GetInt(command, "ST", kStatusAbsent) & 0xFF;
  char cabinet[32] = "";
  if (HasMember(command, "CA")) {
    std::snprintf(cabinet, sizeof cabinet, " CABID %04d", static_cast<int>(GetInt(command, "CA", 0)));
  }
  char head[128];
  std::snprintf(head, sizeof head, "OC 0x%04X-0x%04X OID 0x%04X%s MID 0x%04X%04X Stat 0x%02X", operation,
                extension, object, cabinet, module >> 16, module & 0xFFFF, status);
  return head;
}

}  // namespace

void TraceCommand(std::uint32_t level, const std::string& tag, const HostCommand& command) {
  const std::string head = Head(command);
  if (!HasMember(command, "DA")) {
    EM_TRACE(level, "\n%-20s: %s", tag.c_str(), head.c_str());
  } else if (DataKind(command) == CommandKind::Number) {
    EM_TRACE(level, "\n%-20s: %s Data %d", tag.c_str(), head.c_str(),
             static_cast<int>(GetInt(command, "DA", 0)));
  } else if (IsDataStruct(command)) {
    EM_TRACE(level, "\n%-20s: %s Data (JSON struct):\n%s", tag.c_str(), head.c_str(),
             JsonText(Data(command)).c_str());
  } else {
    std::vector<std::uint8_t> bytes;
    GetDataBytes(command.document, command.current, bytes);
    EM_TRACE(level, "\n%-20s: %s Len %d", tag.c_str(), head.c_str(), static_cast<int>(bytes.size()));
  }
}

}  // namespace emstatus
