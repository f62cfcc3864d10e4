#include "host/recording/Comparison.h"

#include <set>
#include <vector>

#include "host/view/StatusWords.h"

namespace emstatus::host {
namespace {

/// What a scan came to, small enough to keep those of a long recording.
struct KeptScan {
  /// Equal trees are kept once.
  const std::string* tree = nullptr;
  std::uint32_t systemStatus = 0;
  std::uint32_t led = 0;
  std::vector<ReplayedEvent> events;
};

}  // namespace

ComparisonResult CompareConfigurations(const ReplayOptions& options, const std::string& oldConfiguration,
                                       const std::string& newConfiguration,
                                       const std::function<bool()>& goOn) {
  ComparisonResult result;
  const RecordingHeader header = RecordingReader(options.recording).Header();
  std::set<std::string> trees;
  std::vector<KeptScan> kept;
  ReplayOptions replay = options;
  replay.configuration = oldConfiguration;
  result.oldTotals = ReplayRecording(replay, [&](const auto&, const auto& replayed, auto&) {
    kept.push_back(
        {&*trees.insert(replayed.tree.dump()).first, replayed.systemStatus, replayed.led, replayed.events});
    return goOn();
  });

  const StatusWords oldWords(oldConfiguration);
  const StatusWords newWords(newConfiguration);
  replay.configuration = newConfiguration;
  result.newTotals = ReplayRecording(replay, [&](const auto& scan, const auto& replayed, auto&) {
    if (scan.number > kept.size()) {
      return false;
    }
    const KeptScan& old = kept[scan.number - 1];
    const auto tree = nlohmann::ordered_json::parse(*old.tree);
    result.disagreements.Add(
        scan.number, header.began + scan.begin,
        Disagreements({tree, old.systemStatus, old.led, old.events, oldWords},
                      {replayed.tree, replayed.systemStatus, replayed.led, replayed.events, newWords},
                      Extent::Status));
    return goOn();
  });
  return result;
}

}  // namespace emstatus::host
