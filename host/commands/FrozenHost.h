#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/commands/HostOptions.h"
#include "host/commands/StopSignals.h"
#include "host/configuration/UnpausedConfiguration.h"
#include "host/machine/FrozenMachine.h"
#include "host/machine/ScanGate.h"
#include "host/module/ComponentPlaces.h"
#include "host/module/Host.h"
#include "host/module/ModuleLibrary.h"
#include "host/module/ModuleSession.h"
#include "host/module/NoticeQueue.h"
#include "host/view/StatusChange.h"
#include "host/view/StatusNode.h"

namespace emstatus::host {

/// What one scan has left behind.
struct ScanResult {
  /// The module's tree as it wrote it.
  std::string tree;
  std::uint32_t systemStatus = 0;
  std::uint32_t led = 0;
  /// In the order in which they were told; of an instance only its place is known.
  std::vector<StatusChange> changes;
};

/// Reads the machine of the options once, all of it as far as it can be read in some seconds, and freezes it.
/// Null when a stop signal came first. Throws a std::runtime_error when a scenario cannot be read.
/// [main thread]
std::unique_ptr<FrozenMachine> Freeze(const HostOptions& options, const StopSignals& signals);

/// A module that scans a frozen machine, one scan at a time and when it is told, with a private copy of its
/// configuration: nothing that goes on in the configuration's folder disturbs it, and no simulation counts.
/// [main thread]
class FrozenHost {
 public:
  /// `folder` is that of the configuration. Signals and machine must outlive this. Changes into the folder of
  /// the copy. Throws a std::runtime_error that tells people what is wrong and what to do.
  FrozenHost(const HostOptions& options, const std::string& folder, const StopSignals& signals,
             FrozenMachine& machine);
  FrozenHost(const FrozenHost&) = delete;
  FrozenHost& operator=(const FrozenHost&) = delete;
  ~FrozenHost();

  /// Makes one scan. Nothing when a stop signal came first; a std::runtime_error when it does not end.
  std::optional<ScanResult> Scan();

  /// The tree of a scan with the names and objects of its nodes.
  StatusNode NamedTree(const ScanResult& result);

  /// The status of a component after the last scan, by the names in the configuration: the one in which
  /// redundancy counts. Nothing when the module does not tell it.
  std::optional<std::uint32_t> ComponentStatus(const std::string& subsystem, const std::string& component);

 private:
  std::vector<Notice> WaitForNotices();

  const StopSignals& signals_;
  FrozenMachine& machine_;
  const UnpausedConfiguration configuration_;
  std::shared_ptr<NoticeQueue> notices_ = std::make_shared<NoticeQueue>();
  ScanGate gate_;
  StatusHistory history_;
  std::unique_ptr<Host> host_;
  std::unique_ptr<ModuleLibrary> library_;
  std::unique_ptr<ModuleSession> session_;
  std::unique_ptr<ComponentPlaces> places_;
  bool stopped_ = false;
};

}  // namespace emstatus::host
