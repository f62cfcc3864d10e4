#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "host/recording/RecordedScan.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/ReplayedModule.h"

namespace emstatus::host {

struct ReplayOptions {
  std::string recording;
  /// The module's library, an absolute path.
  std::string module;
  /// The text of an EM_STATUS.ini; nothing for the recorded one.
  std::optional<std::string> configuration;
};

/// What a replay came across.
struct ReplayTotals {
  std::uint64_t scans = 0;
  std::uint64_t requests = 0;
  std::uint64_t events = 0;
  /// Subjects of requests that were never recorded, as OC-OI-OE-CA.
  std::set<std::string> unanswered;
};

/// Called for each scan, while the module is held; false ends the replay.
using OnReplayedScan =
    std::function<bool(const RecordedScan& recorded, const ReplayedScan& replayed, ReplayedModule& module)>;

/// Feeds a recording to a module, scan by scan. Throws a std::runtime_error that tells people what is wrong.
/// [main thread]
ReplayTotals ReplayRecording(const ReplayOptions& options, const OnReplayedScan& onScan);

/// What was recorded at each scan, in the form of what is replayed.
class RecordedOutcome {
 public:
  /// Goes on to the next scan.
  void Advance(const RecordedScan& scan, ReplayedModule& module);

  const nlohmann::ordered_json& Tree() const { return tree_; }
  const std::vector<ReplayedEvent>& Events() const { return events_; }

 private:
  nlohmann::ordered_json tree_;
  std::vector<ReplayedEvent> events_;
};

}  // namespace emstatus::host
