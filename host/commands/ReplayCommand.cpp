#include "host/commands/ReplayCommand.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/commands/ReplayArguments.h"
#include "host/commands/StopSignals.h"
#include "host/machine/TimeText.h"
#include "host/recording/Disagreement.h"
#include "host/recording/DisagreementList.h"
#include "host/recording/Replay.h"
#include "host/view/Colours.h"
#include "host/view/StatusWords.h"
#include "host/view/TreeJson.h"
#include "host/view/TreePrinter.h"

namespace emstatus::host {
namespace {

struct ReplayCommandOptions {
  ReplayArguments replay;
  std::string configuration;
  std::string at;
};

/// When a scan began, in milliseconds since 1970.
std::int64_t TimeOf(const RecordingHeader& header, const RecordedScan& scan) {
  return header.began + scan.begin;
}

/// The scan, or the last one that began no later than a time.
class WantedScan {
 public:
  explicit WantedScan(const std::string& text) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number_);
    if (error == std::errc() && end == text.data() + text.size() && number_ != 0) {
      return;
    }
    number_ = 0;
    auto time = ReadUtc(text);
    if (!time && text.ends_with('Z')) {
      time = ReadUtc(text.substr(0, text.size() - 1) + ".000Z");
    }
    if (!time) {
      throw std::runtime_error(
          "--at: expected the number of a scan or a time like 2026-03-01T09:15:02Z, found \"" + text + "\"");
    }
    time_ = std::chrono::duration_cast<std::chrono::milliseconds>(time->time_since_epoch()).count();
  }

  bool IsBehind(const RecordedScan& scan, std::int64_t time) const {
    return number_ != 0 ? scan.number > number_ : time > time_;
  }

  /// Its number was given, and the recording ends before it.
  bool IsMissingBehind(std::uint64_t lastScan) const { return number_ > lastScan; }

 private:
  std::uint64_t number_ = 0;
  std::int64_t time_ = 0;
};

int Summarise(const ReplayTotals& totals, const DisagreementList& differences, bool json) {
  const bool identical = differences.IsEmpty();
  if (json) {
    const nlohmann::ordered_json summary{
        {"Identical", identical},  {"Scans", totals.scans},           {"Requests", totals.requests},
        {"Events", totals.events}, {"Unanswered", totals.unanswered}, {"Differences", differences.Json()}};
    std::cout << summary.dump(2) << std::endl;
    return identical ? 0 : 1;
  }
  std::cout << differences.Text()
            << (identical ? "identical: " : std::to_string(differences.Size()) + " differences in ")
            << totals.scans << " scans, " << totals.requests << " requests, " << totals.events << " events"
            << std::endl;
  TellUnanswered(totals, "");
  return identical ? 0 : 1;
}

int Replay(const ReplayCommandOptions& options) {
  const StopSignals signals;
  ReplayOptions replay = PrepareReplay(options.replay);
  if (!options.configuration.empty()) {
    replay.configuration = ConfigurationAt(options.configuration);
  }
  const RecordingHeader header = RecordingReader(replay.recording).Header();
  const StatusWords recordedWords(header.configuration);
  const StatusWords words(replay.configuration.value_or(header.configuration));
  RecordedOutcome recorded;
  DisagreementList differences("recorded", "replayed");
  const auto totals = ReplayRecording(replay, [&](const auto& scan, const auto& replayed, auto& module) {
    recorded.Advance(scan, module);
    differences.Add(
        scan.number, TimeOf(header, scan),
        Disagreements({recorded.Tree(), scan.systemStatus, scan.led, recorded.Events(), recordedWords},
                      {replayed.tree, replayed.systemStatus, replayed.led, replayed.events, words},
                      Extent::All));
    return !signals.HasCome();
  });
  if (signals.HasCome()) {
    throw std::runtime_error("stopped before the end of the recording.");
  }
  return Summarise(totals, differences, options.replay.json);
}

int ShowMoment(const ReplayCommandOptions& options) {
  const StopSignals signals;
  const WantedScan wanted(options.at);
  ReplayOptions replay = PrepareReplay(options.replay);
  if (!options.configuration.empty()) {
    replay.configuration = ConfigurationAt(options.configuration);
  }
  const RecordingHeader header = RecordingReader(replay.recording).Header();
  const StatusWords words(replay.configuration.value_or(header.configuration));
  std::optional<Report> report;
  std::uint64_t shown = 0;
  ReplayRecording(replay, [&](const auto& scan, const auto& replayed, auto& module) {
    const std::int64_t time = TimeOf(header, scan);
    if (wanted.IsBehind(scan, time)) {
      return false;
    }
    report =
        module.MakeReport(replayed, std::chrono::system_clock::time_point(std::chrono::milliseconds(time)));
    shown = scan.number;
    return !signals.HasCome();
  });
  if (!report) {
    throw std::runtime_error(
        "--at: the recording begins later, at " +
        UtcText(std::chrono::system_clock::time_point(std::chrono::milliseconds(header.began))));
  }
  if (wanted.IsMissingBehind(shown)) {
    throw std::runtime_error("--at: the recording ends with scan " + std::to_string(shown));
  }
  if (options.replay.json) {
    std::cout << TreeJson(*report, words).dump(2) << std::endl;
  } else {
    std::cout << "Scan " << shown << ", " << LocalText(report->time) << "\n\n"
              << TreeText(*report, words, StandardOutputTakesColours()) << std::flush;
  }
  return 0;
}

}  // namespace

std::function<int()> SetUpReplayCommand(CLI::App& command) {
  const auto options = std::make_shared<ReplayCommandOptions>();
  command.add_option("file", options->replay.recording, "The recording")->type_name("FILE")->required();
  command
      .add_option("--config", options->configuration,
                  "Another EM_STATUS.ini, or its folder, in the place of the recorded one")
      ->type_name("DIR");
  command
      .add_option("--at", options->at,
                  "Show the tree after a scan, or at a time like 2026-03-01T09:15:02Z, and end")
      ->type_name("SCAN|TIME");
  AddReplayArguments(command, options->replay);
  command.footer(
      "Examples:\n"
      "  emhost replay fault.emrec.gz                     is all as it was recorded?\n"
      "  emhost replay fault.emrec.gz --at 12             the tree after scan 12\n"
      "  emhost replay fault.emrec.gz --config ../etc     with a configuration that was changed since\n"
      "Exit code: 0 identical, or the tree was shown; 1 something differs; 3 the recording cannot be read.");
  return [options] { return options->at.empty() ? Replay(*options) : ShowMoment(*options); };
}

}  // namespace emstatus::host
