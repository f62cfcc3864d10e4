#pragma once

#include <functional>
#include <string>

#include "host/recording/DisagreementList.h"
#include "host/recording/Replay.h"

namespace emstatus::host {

struct ComparisonResult {
  DisagreementList disagreements{"old", "new"};
  ReplayTotals oldTotals;
  ReplayTotals newTotals;
};

/// Makes the scans of a recording with one configuration, then with another, and tells in which they disagree
/// on a status, an event or the LED. `goOn` is asked after each scan; when it says no, the rest is left out.
/// Throws as ReplayRecording() does. [main thread]
ComparisonResult CompareConfigurations(const ReplayOptions& options, const std::string& oldConfiguration,
                                       const std::string& newConfiguration,
                                       const std::function<bool()>& goOn);

}  // namespace emstatus::host
