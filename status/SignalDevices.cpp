#include "status/SignalDevices.h"

#include <optional>

#include "data/CommandReply.h"
#include "data/OwnedCommand.h"
#include "platform/CDebugClient.h"
#include "status/Aggregation.h"
#include "status/HostLink.h"
#include "status/HostOperations.h"

namespace emstatus {
namespace {

constexpr std::int32_t kIdentifySignal = 0;
constexpr std::int32_t kGlobalErrorSignal = 1;

/// A wrong count would hold the scan, and with it the shutdown.
constexpr std::int32_t kMaxSignals = 256;

std::optional<std::int32_t> Ask(HostLink& host, std::uint32_t operation, std::int32_t object) {
  OwnedCommand command({.operation = operation,
                        .object = static_cast<std::uint32_t>(object),
                        .cabinet = host.ServerCabinet()});
  host.SendRequest(command);
  return ReadReply(command).number;
}

}  // namespace

void SignalDevices::Find() {
  const auto count = Ask(host_, operation::kSignalCount, 0);
  if (!count) {
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> no status signals available");
    return;
  }
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> %d signal objects detected", *count);
  if (*count > kMaxSignals) {
    EM_TRACE(1,
             "\nEM_STATUS (QUERY)   : ## ERROR! More than %d signal objects can only be an error - ignored!",
             kMaxSignals);
    return;
  }
  for (std::int32_t object = 0; object < *count; ++object) FindPurpose(object);
}

void SignalDevices::FindPurpose(std::int32_t object) {
  const auto purpose = Ask(host_, operation::kSignalPurpose, object);
  if (!purpose) {
    EM_TRACE(
        1, "\nEM_STATUS (QUERY)   : GetStatusSignalInfo(): ## ERROR! Failed to get status signal %d purpose!",
        object);
  } else if (*purpose == kIdentifySignal) {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   :   object %d: Identify signal", object);
  } else if (*purpose == kGlobalErrorSignal) {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   :   object %d: Global error signal", object);
    gelIndex_ = object;
  } else {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   :   object %d: Unknown signal detected (%d) - ignored", object,
             *purpose);
  }
}

void SignalDevices::Show(const StatusTreeNode& root) {
  if (gelIndex_ == kNoObject) {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   : No global error LED found");
    return;
  }
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : Global error LED(s) available, update LED status...");
  OwnedCommand command({.operation = operation::kSetSignal,
                        .object = static_cast<std::uint32_t>(gelIndex_),
                        .cabinet = host_.ServerCabinet()});
  command.AddData(OwnedValue::UInt32(GelValue(root)));
  host_.SendRequest(command);
  if (!ReadReply(command).completed) {
    EM_TRACE(1, "\n\nEM_STATUS (QUERY)   : ## ERROR! Update global error LED failed!\n");
  }
}

}  // namespace emstatus
