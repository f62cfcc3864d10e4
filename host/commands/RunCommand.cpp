#include "host/commands/RunCommand.h"

#include <chrono>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/commands/RunCompanion.h"
#include "host/commands/RunningHost.h"
#include "host/commands/StandardStreams.h"
#include "host/commands/StatusService.h"
#include "host/led/StatusLed.h"
#include "host/providers/RealFiles.h"
#include "host/view/Colours.h"
#include "host/view/SimulationText.h"
#include "host/view/TreeJson.h"
#include "host/view/TreePrinter.h"

namespace emstatus::host {
namespace {

struct RunOptions {
  HostOptions host;
  ServiceOptions service;
  /// Empty: none.
  std::string led;
  bool once = false;
  bool json = false;
  /// Seconds that --once waits for a scan.
  int limit = 60;
};

/// None when none is named.
std::unique_ptr<StatusLed> MakeLed(const RunOptions& options) {
  if (options.led.empty()) {
    return nullptr;
  }
  if (!options.host.linux.root.empty()) {
    throw std::runtime_error("a copy of another machine (--root) has no LED that could be set (--led).");
  }
  return std::make_unique<StatusLed>(options.led, std::make_unique<RealFiles>(), [](const std::string& text) {
    std::cerr << "emhost: " + text + "\n" << std::flush;
  });
}

class Run {
 public:
  Run(const RunOptions& options, const RunCompanion& companion)
      : options_(options),
        companion_(companion),
        colours_(!options.json && StandardOutputTakesColours()),
        service_(options.once ? ServiceOptions{"", true} : options.service),
        led_(MakeLed(options)),
        host_(options.host, companion.traffic) {}

  int Once();
  int Forever();

 private:
  void HandleScan(const Notice& notice);
  void HandleNotice(const Notice& notice);
  void Show(const Report& report) const;
  void Show(const StatusChange& change);
  void ShowSimulation(const Notice& scanEnd, const Report& report);
  void TellLostOutput();

  const RunOptions& options_;
  const RunCompanion& companion_;
  const bool colours_;
  // From before the host's start, so that whoever asks meanwhile waits for its first scan.
  StatusService service_;
  const std::unique_ptr<StatusLed> led_;
  RunningHost host_;
  StatusHistory history_;
  std::vector<StatusChange> pending_;
  SimulationState simulation_;
  bool treeShown_ = false;
  bool over_ = false;
  bool outputLost_ = false;
};

void Run::Show(const Report& report) const {
  if (!options_.json) {
    std::cout << TreeText(report, host_.Words(), colours_) << std::flush;
    return;
  }
  nlohmann::ordered_json json = TreeJson(report, host_.Words());
  if (!options_.once) {
    json = {{"Event", "Tree"}, {"Report", json}};
  }
  std::cout << JsonText(json, options_.once) << std::endl;
}

void Run::Show(const StatusChange& change) {
  const nlohmann::ordered_json json = ChangeJson(change, host_.Words());
  std::cout << (options_.json ? JsonText(json) : ChangeText(change, host_.Words(), colours_)) << std::endl;
  service_.Tell(json, ChangeText(change, host_.Words(), false));
}

int Run::Once() {
  const auto report = host_.FirstReport(std::chrono::seconds(options_.limit));
  if (report) {
    Show(*report);
  }
  return ExitCodeOf(report ? report->systemStatus : 0);
}

/// Tells what is simulated, before the events that come of it, when that is no longer what it was.
void Run::ShowSimulation(const Notice& scanEnd, const Report& report) {
  SimulationState simulation = host_.Simulation();
  const bool same = std::exchange(simulation_, simulation) == simulation;
  if (same || !treeShown_) {
    return;
  }
  if (simulation.InForce()) {
    // Knows which of the parts there are.
    simulation = report.simulation;
  }
  const nlohmann::ordered_json json = SimulationEventJson(scanEnd.time, simulation, host_.Words());
  const std::string text = SimulationEventText(scanEnd.time, simulation, host_.Words());
  std::cout << (options_.json ? JsonText(json) : InColour(text, 2, colours_)) << std::endl;
  service_.Tell(json, text);
}

/// Whoever asks on the socket is still answered, and a disk may have room again.
void Run::TellLostOutput() {
  if (!FlushStandardOutput()) {
    std::cout.clear();
    if (!std::exchange(outputLost_, true)) {
      std::cerr << "emhost: standard output cannot be written: what happens is not all shown there."
                << std::endl;
    }
  }
}

/// Events come before the end of their scan, which is when the tree holds what they tell.
void Run::HandleScan(const Notice& notice) {
  const Report report = host_.MakeReport(notice.led);
  service_.Publish(report, host_.Words());
  if (led_) {
    led_->Show(notice.led);
  }
  ShowSimulation(notice, report);
  if (!treeShown_) {
    Show(report);
    treeShown_ = true;
  } else {
    for (StatusChange& change : pending_) {
      host_.Name(change, report.root);
      Show(change);
    }
  }
  pending_.clear();
  TellLostOutput();
}

void Run::HandleNotice(const Notice& notice) {
  if (auto change = history_.Take(notice)) {
    pending_.push_back(std::move(*change));
  }
  if (notice.kind == Notice::Kind::ScanEnd) {
    over_ = !companion_.scanEnds();
    HandleScan(notice);
  } else if (notice.kind == Notice::Kind::Changed && treeShown_) {
    host_.WakeUp();
  }
}

int Run::Forever() {
  using Clock = std::chrono::steady_clock;
  companion_.started();
  const auto end = companion_.limit ? std::optional(Clock::now() + *companion_.limit) : std::nullopt;
  while (!host_.Stopped() && !over_) {
    const auto rest =
        end ? std::optional(std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now())) : std::nullopt;
    for (const Notice& notice : host_.Wait(rest)) {
      HandleNotice(notice);
      if (over_) {
        break;
      }
    }
    over_ = over_ || (end && Clock::now() >= *end);
  }
  return 0;
}

}  // namespace

int RunAccompanied(const HostOptions& options, bool json, const RunCompanion& companion) {
  RunOptions runOptions;
  runOptions.host = options;
  runOptions.json = json;
  // One that only records does not stand in for the emhost that runs.
  runOptions.service.none = true;
  return Run(runOptions, companion).Forever();
}

std::function<int()> SetUpRunCommand(CLI::App& command) {
  const auto options = std::make_shared<RunOptions>();
  AddHostOptions(command, options->host);
  AddServiceOptions(command, options->service);
  auto* led =
      command
          .add_option("--led", options->led,
                      "Show the error LED at this LED of /sys/class/leds: blinking for a warning, on for "
                      "an error")
          ->type_name("NAME");
  command
      .add_flag("--once", options->once,
                "Show the tree after the first scan; exit 0 all good, 1 warning, 2 error, 3 no status")
      ->excludes(led);
  command.add_flag("--json", options->json, "For programs: the tree, and each event as a line, as JSON");
  command.add_option("--limit", options->limit, "Seconds to wait for the scan of --once")
      ->check(CLI::Range(1, 3600).description(""))
      ->type_name("SECONDS")
      ->capture_default_str();
  command.footer(
      "Examples:\n"
      "  emhost run --once                                     this machine, once\n"
      "  emhost run --state /var/lib/emhost --led status:red   for good, with its LED\n"
      "  emhost run --unit ssh.service --process nginx         what must run besides\n"
      "  emhost run --provider scenario:examples/server.json   a server that is played");
  return [options] {
    const RunCompanion companion;
    Run run(*options, companion);
    return options->once ? run.Once() : run.Forever();
  };
}

}  // namespace emstatus::host
