#include "host/recording/Replay.h"

#include <stdexcept>

#include "host/module/CommandReader.h"
#include "host/recording/RequestKey.h"

namespace emstatus::host {
ReplayTotals ReplayRecording(const ReplayOptions& options, const OnReplayedScan& onScan) {
  RecordingReader reader(options.recording);
  auto scan = reader.Next();
  if (!scan) {
    throw std::runtime_error(options.recording + ": the recording ends before its first scan");
  }
  ReplayedModule module(options.module, options.configuration.value_or(reader.Header().configuration),
                        reader.Header());
  ReplayTotals totals;
  while (scan) {
    auto following = reader.Next();
    const ReplayedScan replayed = module.Scan(*scan, following ? &*following : nullptr);
    totals.scans = scan->number;
    totals.events += replayed.events.size();
    for (const Request& request : replayed.unanswered) {
      totals.unanswered.insert(PlaceText(request));
    }
    totals.requests = module.Machine().Asked();
    if (!onScan(*scan, replayed, module)) {
      break;
    }
    scan = std::move(following);
  }
  return totals;
}

void RecordedOutcome::Advance(const RecordedScan& scan, ReplayedModule& module) {
  if (scan.tree) {
    tree_ = *scan.tree;
  }
  events_.clear();
  for (const RecordedEvent& entry : scan.events) {
    events_.push_back({entry.event, module.SubjectOf(entry.event), NumberOf(entry.event.data).value_or(0)});
  }
}

}  // namespace emstatus::host
