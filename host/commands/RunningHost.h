#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "host/commands/HostOptions.h"
#include "host/commands/StopSignals.h"
#include "host/configuration/Configuration.h"
#include "host/machine/Machine.h"
#include "host/module/ComponentPlaces.h"
#include "host/module/Host.h"
#include "host/module/ModuleLibrary.h"
#include "host/module/ModuleSession.h"
#include "host/module/NoticeQueue.h"
#include "host/simulation/SimulationTracker.h"
#include "host/simulation/SimulationWatch.h"
#include "host/view/Report.h"
#include "host/view/SinceTracker.h"
#include "host/view/StatusChange.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

/// The machine that --provider names. Throws a std::runtime_error when its scenario cannot be read.
std::unique_ptr<Machine> MakeMachine(const HostOptions& options);

/// The absolute path of the module's library: `wanted`, or where DefaultPaths finds it. Throws a ModuleError
/// when it is nowhere.
std::string AbsoluteModule(const std::string& wanted);

/// Sets the trace level of a module that is loaded afterwards; a negative one leaves it as it is.
void SetTraceLevel(int level);

/// A module at work: machine, host, library and session, started by the constructor in this order and ended
/// by the destructor in the opposite one. Changes into the configuration's folder, because the module looks
/// there first. Follows the simulation file there, too. [main thread]
class RunningHost {
 public:
  /// Throws a std::runtime_error that tells people what is wrong and what to do.
  /// `traffic`, which may be missing, must outlive this.
  explicit RunningHost(const HostOptions& options, TrafficObserver* traffic = nullptr);
  RunningHost(const RunningHost&) = delete;
  RunningHost& operator=(const RunningHost&) = delete;
  ~RunningHost();

  /// Waits for notices; empty when a stop signal or the end of `limit` came first. May also return empty when
  /// the simulation has changed.
  std::vector<Notice> Wait(std::optional<std::chrono::milliseconds> limit);
  bool Stopped() const { return stopped_; }

  /// Makes the module scan at once, because the machine has changed.
  void WakeUp();

  /// The state after the last scan; `led` is what the scan set. Throws a std::runtime_error when the module
  /// gives no tree that can be read.
  Report MakeReport(std::uint32_t led);

  /// Waits for the first scan. Nothing after a stop signal; throws a std::runtime_error when no scan ends
  /// within `limit`, and as MakeReport() does.
  std::optional<Report> FirstReport(std::chrono::seconds limit);

  /// Fills in names, and the object that an instance stands for, from the tree, and whether it is simulated.
  void Name(StatusChange& change, const StatusNode& root);

  /// What the last scan simulated.
  SimulationState Simulation() const { return simulation_->State(); }

  const StatusWords& Words() const { return words_; }

 private:
  void FollowSimulation();
  void FollowScans(const std::vector<Notice>& notices);

  TrafficObserver* const traffic_;
  // In the order of their making
  StopSignals signals_;
  StatusWords words_;
  Configuration configuration_;
  SinceTracker since_;
  std::shared_ptr<NoticeQueue> notices_ = std::make_shared<NoticeQueue>();
  std::unique_ptr<Machine> machine_;
  std::unique_ptr<SimulationWatch> simulationWatch_;
  std::unique_ptr<SimulationTracker> simulation_;
  std::unique_ptr<Host> host_;
  std::unique_ptr<ModuleLibrary> library_;
  std::unique_ptr<ModuleSession> session_;
  std::unique_ptr<ComponentPlaces> places_;
  bool stopped_ = false;
};

}  // namespace emstatus::host
