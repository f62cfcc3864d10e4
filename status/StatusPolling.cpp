#include "status/StatusPolling.h"

#include <unistd.h>

#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

/// Collects a burst of the host's events into one scan.
constexpr useconds_t kSettleMicroseconds = 100000;

void TraceSeparator() {
  EM_TRACE(
      2,
      "\n---------------------------------------------------------------------------------------------------------------------");
}

}  // namespace

void StatusPolling::Run() {
  EM_TRACE(1, "\n\nEM_STATUS (QUERY)   : ## Status polling thread started, normal polling rate = %d seconds",
           configuration_.Get()->pollingRate);
  EM_TRACE(1, "\n                    :      Initial polling rate = %d seconds",
           configuration_.Get()->advancedPollingRate);
  if (!switchShutdown_) DelayFirstQuery();
  while (!switchShutdown_) RunCycle();
  EM_TRACE(4, "\nEM_STATUS (QUERY)   : Status polling loop exit\n");
  EM_TRACE(1, "\nEM_STATUS (QUERY)   : ## EXIT Thread Status Thread_StatusPolling\n");
}

void StatusPolling::DelayFirstQuery() {
  const std::int32_t seconds = configuration_.Get()->initialPollingDelay;
  if (seconds == 0) return;
  EM_TRACE(1, "\n\nEM_STATUS (QUERY)   : Delaying first status query for %d seconds...", seconds);
  // Not reset: a wake-up that came during the delay shortens the first sleep as well.
  wakeUp_.Wait(static_cast<std::uint32_t>(seconds) * 1000U, true);
  EM_TRACE(1, "\nEM_STATUS (QUERY)   :   initial delay finished");
}

void StatusPolling::RunCycle() {
  EM_TRACE(3, "\n");
  TraceSeparator();
  EM_TRACE(2, "\nEM_STATUS (QUERY)   : Status polling cycle #%d", static_cast<int>(cycleCounter_));
  ++cycleCounter_;
  if (!switchShutdown_) {
    simulation_.FollowFile();
    scan_.QuerySystemStatus(cycleCounter_);
  }
  Sleep(IntervalSeconds());
}

std::uint32_t StatusPolling::IntervalSeconds() const {
  const auto configuration = configuration_.Get();
  const bool advanced = static_cast<std::uint32_t>(configuration->advancedPollingCycles) > cycleCounter_;
  return static_cast<std::uint32_t>(advanced ? configuration->advancedPollingRate
                                             : configuration->pollingRate);
}

void StatusPolling::Sleep(std::uint32_t seconds) {
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : Status polling loop sleeeeeeeeeping for %d seconds\n",
           static_cast<int>(seconds));
  TraceSeparator();
  const EventWaitResult result = wakeUp_.Wait(seconds * 1000U, true);
  EM_TRACE(4, "\n\nEM_STATUS (QUERY)   : Status polling loop wakeup");
  if (result == EVENT_SIGNAL) {
    EM_TRACE(4, "\nEM_STATUS (QUERY)   :   polling loop woke up by TRIQ event");
    if (!switchShutdown_) {
      EM_TRACE(4, "\nEM_STATUS (QUERY)   :   sleeping 100 msec to ignore other wakeup events");
      usleep(kSettleMicroseconds);
    }
  }
  wakeUp_.Reset();
}

}  // namespace emstatus
