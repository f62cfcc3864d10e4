#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "config/CurrentConfiguration.h"
#include "config/Simulation.h"
#include "status/CabinetList.h"
#include "status/ComponentQuery.h"
#include "status/ComponentState.h"
#include "status/HostQuery.h"
#include "status/SignalDevices.h"
#include "status/StatusEvents.h"
#include "status/WorkingTree.h"
#include "tree/StatusTree.h"

namespace emstatus {

class HostLink;

/// What the scan shares with the rest of the module.
struct ScanContext {
  HostLink& host;
  const CurrentConfiguration& configuration;
  const Simulation& simulation;
  const CabinetList& cabinets;
  StatusTree& tree;
  /// Ends a scan at its next check.
  const std::atomic<bool>& switchShutdown;
  /// Asks for a refresh of the host's RAID data; cleared by the scan.
  std::atomic<bool>& raidRefresh;
};

/// One scan after another of the whole system: asks for every component, publishes the tree, fires the
/// events and drives the global error LED. Another configuration goes on with the same tree: what did not
/// change is not reported anew, and what is no longer configured stays, with its statuses cleared.
/// [polling thread]
class SystemScan {
 public:
  explicit SystemScan(const ScanContext& context)
      : context_(context), query_(context.host), signals_(context.host) {}

  /// Runs one scan. `cycleCounter` counts from 1 and decides, with the length of the probing phase, what kind
  /// of cycle this is.
  void QuerySystemStatus(std::uint64_t cycleCounter);

 private:
  /// The definition that answered for a component, as this scan goes by it.
  using Answers = std::vector<std::vector<const ComponentState*>>;

  /// What one scan has made so far.
  struct Progress {
    CycleKind cycle;
    std::vector<std::uint32_t> cabinets;
    WorkingTree tree;
    Answers answers;
    InstanceEvents events;
  };

  void AdoptConfiguration();
  CycleKind KindOfCycle(std::uint64_t cycleCounter) const;
  void RefreshRaidData();
  NodeMap CopyTree() const;
  /// False when the scan was shut down.
  bool ScanAndReport(CycleKind cycle);
  bool ScanSubsystems(Progress& progress);
  bool ScanComponents(Progress& progress, std::uint32_t subsystem, StatusTreeNode& node);
  const ComponentState* QueryComponent(const Progress& progress, const SubsystemDefinition& subsystem,
                                       const std::string& name);
  void Place(Progress& progress, const ComponentPosition& position, StatusTreeNode& subsystemNode,
             const ComponentState& component);
  void PlaceLeaf(StatusTreeNode& node, const ComponentState& component) const;
  void PlaceInstances(Progress& progress, const ComponentPosition& position, StatusTreeNode& node,
                      const ComponentState& component) const;
  void MakeKey(StatusTreeNode& node, const ComponentState& component,
               std::optional<std::uint32_t> instanceIndex, std::uint32_t cabinet) const;
  StatusValue Publish(Progress& progress);
  ComponentState* StateOf(const std::string& name);

  const ScanContext context_;
  const HostQuery query_;
  SignalDevices signals_;
  /// What the states below belong to; null before the first scan.
  std::shared_ptr<const StatusConfiguration> configuration_;
  std::map<std::string, ComponentState, std::less<>> components_;
  /// As it was last reported.
  StatusValue systemStatus_ = NoStatus;
};

}  // namespace emstatus
