#include "tree/ReplyHandler.h"

#include "data/Command.h"
#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

/// "ST" of an event, in contrast to a reply.
constexpr std::uint32_t kEvent = 255;

constexpr std::uint32_t kStatusChanged = 0x1801;
constexpr std::uint32_t kRaidStatusChanged = 0x21DE;
constexpr std::uint32_t kConfigurationSpaceRead = 0xE001;
constexpr std::uint32_t kConfigurationSpaceWritten = 0xE002;

bool IsPowerLimit(std::uint32_t extension) {
  return extension == 0x1A06 || extension == 0x1A08 || extension == 0x1A09 || extension == 0x1A0B;
}

}  // namespace

void ReplyHandler::OnReply(const HostCommand& command) const {
  if (GetInt(command, "ST", kStatusAbsent) != kEvent) return;
  switch (GetInt(command, "OC", 0)) {
    case kStatusChanged:
      WakePolling();
      break;
    case kRaidStatusChanged:
      raidRefresh_ = true;
      WakePolling();
      break;
    case kConfigurationSpaceRead:
    case kConfigurationSpaceWritten:
      OnConfigurationSpaceAccess(command);
      break;
    default:
      EM_TRACE(2, "\nEM_STATUS (REPLY)   : Event reply ignored");
      break;
  }
}

void ReplyHandler::OnConfigurationSpaceAccess(const HostCommand& command) const {
  if (!IsPowerLimit(GetInt(command, "OE", 0))) {
    EM_TRACE(4, "\nEM_STATUS (REPLY)   : Read/write config  space event ignored");
    return;
  }
  EM_TRACE(2, "\nEM_STATUS (REPLY)   : Power limit configuration changed");
  WakePolling();
}

void ReplyHandler::WakePolling() const {
  EM_TRACE(2, "\nEM_STATUS (REPLY)   : --> wake up polling thread to update status tree");
  wakeUp_.Set();
}

}  // namespace emstatus
