#include "host/commands/RunCommand.h"

#include <chrono>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "host/commands/RunningHost.h"
#include "host/view/Colours.h"
#include "host/view/SimulationText.h"
#include "host/view/TreeJson.h"
#include "host/view/TreePrinter.h"

namespace emstatus::host {
namespace {

struct RunOptions {
  HostOptions host;
  bool once = false;
  bool json = false;
  /// Seconds that --once waits for a scan.
  int limit = 60;
};

class Run {
 public:
  explicit Run(const RunOptions& options)
      : options_(options), colours_(!options.json && StandardOutputTakesColours()), host_(options.host) {}

  int Once();
  int Forever();

 private:
  void HandleScan(const Notice& notice);
  void HandleNotice(const Notice& notice);
  void Show(const Report& report) const;
  void Show(const StatusChange& change) const;
  void ShowSimulation(const Notice& scanEnd);

  const RunOptions& options_;
  const bool colours_;
  RunningHost host_;
  StatusHistory history_;
  std::vector<StatusChange> pending_;
  SimulationState simulation_;
  bool treeShown_ = false;
};

/// JSON of one line while it goes on, laid out when it is all there is.
std::string Dumped(const nlohmann::ordered_json& json, int indent) {
  return json.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

void Run::Show(const Report& report) const {
  if (!options_.json) {
    std::cout << TreeText(report, host_.Words(), colours_) << std::flush;
    return;
  }
  nlohmann::ordered_json json = TreeJson(report, host_.Words());
  if (!options_.once) {
    json = {{"Event", "Tree"}, {"Report", json}};
  }
  std::cout << Dumped(json, options_.once ? 2 : -1) << std::endl;
}

void Run::Show(const StatusChange& change) const {
  std::cout << (options_.json ? Dumped(ChangeJson(change, host_.Words()), -1)
                              : ChangeText(change, host_.Words(), colours_))
            << std::endl;
}

int Run::Once() {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(options_.limit);
  while (!host_.Stopped()) {
    const auto rest = end - std::chrono::steady_clock::now();
    const auto notices = host_.Wait(std::chrono::ceil<std::chrono::milliseconds>(rest));
    for (const Notice& notice : notices) {
      if (notice.kind == Notice::Kind::ScanEnd) {
        const Report report = host_.MakeReport(notice.led);
        Show(report);
        return ExitCodeOf(report.systemStatus);
      }
    }
    if (rest <= rest.zero()) {
      throw std::runtime_error("no scan has ended within " + std::to_string(options_.limit) +
                               " seconds; --trace 2 tells what the module is doing.");
    }
  }
  return ExitCodeOf(0);
}

/// Tells what is simulated, before the events that come of it, when that is no longer what it was.
void Run::ShowSimulation(const Notice& scanEnd) {
  SimulationState simulation = host_.Simulation();
  const bool same = std::exchange(simulation_, simulation) == simulation;
  if (same || !treeShown_) {
    return;
  }
  if (simulation.InForce()) {
    // Knows which of the parts there are.
    simulation = host_.MakeReport(scanEnd.led).simulation;
  }
  std::cout << (options_.json
                    ? Dumped(SimulationEventJson(scanEnd.time, simulation, host_.Words()), -1)
                    : InColour(SimulationEventText(scanEnd.time, simulation, host_.Words()), 2, colours_))
            << std::endl;
}

/// Events come before the end of their scan, which is when the tree holds what they tell.
void Run::HandleScan(const Notice& notice) {
  ShowSimulation(notice);
  if (!treeShown_) {
    Show(host_.MakeReport(notice.led));
    treeShown_ = true;
  } else if (!pending_.empty()) {
    const Report report = host_.MakeReport(notice.led);
    for (StatusChange& change : pending_) {
      host_.Name(change, report.root);
      Show(change);
    }
  }
  pending_.clear();
}

void Run::HandleNotice(const Notice& notice) {
  if (auto change = history_.Take(notice)) {
    pending_.push_back(std::move(*change));
  }
  if (notice.kind == Notice::Kind::ScanEnd) {
    HandleScan(notice);
  } else if (notice.kind == Notice::Kind::Changed && treeShown_) {
    host_.WakeUp();
  }
}

int Run::Forever() {
  while (!host_.Stopped()) {
    for (const Notice& notice : host_.Wait(std::nullopt)) {
      HandleNotice(notice);
    }
  }
  return 0;
}

}  // namespace

std::function<int()> SetUpRunCommand(CLI::App& command) {
  const auto options = std::make_shared<RunOptions>();
  AddHostOptions(command, options->host);
  command.add_flag("--once", options->once,
                   "Show the tree after the first scan; exit 0 all good, 1 warning, 2 error, 3 no status");
  command.add_flag("--json", options->json, "For programs: the tree, and each event as a line, as JSON");
  command.add_option("--limit", options->limit, "Seconds to wait for the scan of --once")
      ->check(CLI::Range(1, 3600).description(""))
      ->type_name("SECONDS")
      ->capture_default_str();
  return [options] {
    Run run(*options);
    return options->once ? run.Once() : run.Forever();
  };
}

}  // namespace emstatus::host
