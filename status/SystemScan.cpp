#include "status/SystemScan.h"

#include <utility>

#include "platform/CDebugClient.h"
#include "status/Aggregation.h"
#include "status/AssociationKey.h"
#include "status/HostLink.h"
#include "status/HostOperations.h"
#include "status/StatusCalculation.h"

namespace emstatus {

void SystemScan::QuerySystemStatus(std::uint64_t cycleCounter) {
  AdoptConfiguration();
  const CycleKind cycle = KindOfCycle(cycleCounter);
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : Find status signal devices...");
  signals_.Find();
  RefreshRaidData();
  if (!ScanAndReport(cycle)) {
    EM_TRACE(2, "\n##EM_STATUS (QUERY)   : ## Module shutdown detected; status queries aborted!");
  }
  EM_TRACE(3, "\n\nEM_STATUS (QUERY)   : Exit QuerySystemStatus()");
}

void SystemScan::AdoptConfiguration() {
  auto configuration = context_.configuration.Get();
  if (configuration == configuration_) return;
  components_.clear();
  for (const auto& [name, definition] : configuration->components) components_.try_emplace(name, definition);
  configuration_ = std::move(configuration);
}

CycleKind SystemScan::KindOfCycle(std::uint64_t cycleCounter) const {
  const auto cycles = static_cast<std::uint32_t>(configuration_->advancedPollingCycles);
  const CycleKind cycle{.probing = cycleCounter < cycles,
                        .checkInactive = cycles != 0 && cycleCounter % cycles == 0};
  if (cycle.probing) {
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> Probing phase cycle");
  } else if (cycle.checkInactive) {
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> Check inactive cycle");
  }
  return cycle;
}

void SystemScan::RefreshRaidData() {
  if (!context_.raidRefresh.exchange(false)) return;
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : refresh QX RAID storage data snapshot...");
  OwnedCommand command({.operation = operation::kRefreshRaidData, .cabinet = context_.host.ServerCabinet()});
  context_.host.SendRequest(command);
}

NodeMap SystemScan::CopyTree() const {
  EM_TRACE(
      2,
      "\n\nEM_STATUS (QUERY)   : Scan all subsystems and their components and query their status values...");
  EM_TRACE(
      4,
      "\n\nEM_STATUS (QUERY)   :   copy status tree map to temporary map to avoid requesting inconsistent values during a scan cycle");
  return context_.tree.Current()->nodes;
}

bool SystemScan::ScanAndReport(CycleKind cycle) {
  Progress progress{cycle, context_.cabinets.Copy(), WorkingTree(CopyTree()), {}, {}};
  if (!ScanSubsystems(progress)) return false;
  EM_TRACE(4, "\n\nEM_STATUS (QUERY)   :   copy the temporary working status tree map back to the real map");
  const StatusValue before = std::exchange(systemStatus_, Publish(progress));
  EM_TRACE(2, "\n\nEM_STATUS (QUERY)   : new system status: %s\n", configuration_->StatusName(systemStatus_));
  progress.events.Fire(context_.host);
  if (systemStatus_ != before) {
    EM_TRACE(1, "\nEM_STATUS (QUERY)   : ==> System status changed from \"%s\" to \"%s\" - fire event",
             configuration_->StatusName(before), configuration_->StatusName(systemStatus_));
    FireSystemStatus(context_.host, systemStatus_);
  }
  if (context_.switchShutdown) return false;
  const auto published = context_.tree.Current();
  signals_.Show(*published->FindNode(kRootId));
  return true;
}

bool SystemScan::ScanSubsystems(Progress& progress) {
  progress.tree.Root().designation = configuration_->systemDesignation;
  EM_TRACE(4, "\n\nEM_STATUS (QUERY)   :   scan all subsystems");
  for (std::uint32_t i = 0; i < configuration_->subsystems.size(); ++i) {
    if (context_.switchShutdown) return false;
    const SubsystemDefinition& subsystem = configuration_->subsystems[i];
    StatusTreeNode& node = progress.tree.Subsystem(subsystem.name);
    node.ClearStates();
    node.designation = subsystem.displayName;
    progress.answers.emplace_back();
    if (!ScanComponents(progress, i, node)) return false;
  }
  return true;
}

bool SystemScan::ScanComponents(Progress& progress, std::uint32_t subsystem, StatusTreeNode& node) {
  const SubsystemDefinition& definition = configuration_->subsystems[subsystem];
  for (std::uint32_t i = 0; i < definition.componentNames.size(); ++i) {
    if (context_.switchShutdown) return false;
    const ComponentState* answer = QueryComponent(progress, definition, definition.componentNames[i]);
    progress.answers.back().push_back(answer);
    if (answer == nullptr || answer->found.status == NoStatus) continue;
    EM_TRACE(3, "\nEM_STATUS (QUERY)   : Component has a valid status -> insert in status tree");
    Place(progress, {subsystem, i}, node, *answer);
    UpdateParentStatus(progress.tree.Root(), node);
  }
  return true;
}

const ComponentState* SystemScan::QueryComponent(const Progress& progress,
                                                 const SubsystemDefinition& subsystem,
                                                 const std::string& name) {
  EM_TRACE(3, "\n");
  EM_TRACE(
      3,
      "\nEM_STATUS (QUERY)   : -------------------------------------------------------------------------------");
  EM_TRACE(2, "\nEM_STATUS (QUERY)   : Query status for component \"%s\"", name.c_str());
  ComponentState* component = StateOf(name);
  if (component == nullptr) {
    EM_TRACE(
        1,
        "\nEM_STATUS (QUERY)   : ## ERROR! Component \"%s\" is listed in subsystem \"%s\" but not available in component map - fix this!!",
        name.c_str(), subsystem.name.c_str());
    return nullptr;
  }
  const QueryEnvironment environment{*configuration_,   context_.simulation,     query_,
                                     progress.cabinets, context_.switchShutdown, progress.cycle};
  if (ComponentQuery(environment, *component).QueryComponentStatus()) return component;
  if (!component->definition->hasAlternative) return component;

  EM_TRACE(
      3,
      "\nEM_STATUS (QUERY)   :   -> component status request failed but alternate request component available - try with that one...");
  ComponentState* alternative = StateOf(name + ".alt");
  if (alternative == nullptr) {
    EM_TRACE(
        1,
        "\n\nEM_STATUS (QUERY)   : ## FATAL ERROR! Component \"%s\" should have an alternative component but none is available!\n",
        name.c_str());
    return component;
  }
  ComponentQuery(environment, *alternative).QueryComponentStatus();
  return alternative;
}

void SystemScan::Place(Progress& progress, const ComponentPosition& position, StatusTreeNode& subsystemNode,
                       const ComponentState& component) {
  const SubsystemDefinition& subsystem = configuration_->subsystems[position.subsystem];
  const std::string& name = subsystem.componentNames[position.component];
  StatusTreeNode& node = progress.tree.Component(subsystemNode, name, subsystem.name);
  node.designation = component.found.displayName;
  if (component.hasInstances) {
    PlaceInstances(progress, position, node, component);
  } else {
    PlaceLeaf(node, component);
  }
  UpdateParentStatus(subsystemNode, node);
}

void SystemScan::PlaceLeaf(StatusTreeNode& node, const ComponentState& component) const {
  EM_TRACE(4, "\nEM_STATUS (QUERY)   :   component has no instances - add component as leaf...");
  MakeKey(node, component, std::nullopt, 0);
  node.objectStatus = static_cast<std::uint32_t>(component.found.rawValue);
  node.status = component.found.status;
  MakeGelCssStatus(node, static_cast<std::int32_t>(component.css));
}

void SystemScan::PlaceInstances(Progress& progress, const ComponentPosition& position, StatusTreeNode& node,
                                const ComponentState& component) const {
  const std::string& name = configuration_->subsystems[position.subsystem].componentNames[position.component];
  const auto& instances = component.found.instances;
  EM_TRACE(4, "\nEM_STATUS (QUERY)   :   component has %d instances - add instances as leaf...",
           static_cast<int>(instances.size()));
  node.ClearStates();
  EM_TRACE(4, "\nEM_STATUS (QUERY)   :   states cleared for \"%s\" ", node.id.c_str());
  for (const auto& [key, instance] : instances) {
    StatusTreeNode& leaf = progress.tree.Instance(node, key, name);
    EM_TRACE(4, "\nEM_STATUS (QUERY)   :   -> instance \"%s\"", key.c_str());
    leaf.designation = instance.DisplayText();
    MakeKey(leaf, component, instance.index, instance.cabinet);
    leaf.objectStatus = instance.rawValue;
    leaf.status = instance.status;
    MakeGelCssStatus(leaf, static_cast<std::int32_t>(instance.css));
    EM_TRACE(
        4, "\nEM_STATUS (QUERY)   :     objectStatus=%d, status=%d, isCSS=%d, nonCssStatus=%d, cssStatus=%d",
        static_cast<int>(leaf.objectStatus), leaf.status, leaf.isCSS, leaf.nonCssStatus, leaf.cssStatus);
    UpdateParentStatus(node, leaf);
    if (leaf.status != progress.tree.StatusBefore(leaf)) {
      progress.events.Add(*configuration_, name, position, instance);
    }
  }
}

void SystemScan::MakeKey(StatusTreeNode& node, const ComponentState& component,
                         std::optional<std::uint32_t> instanceIndex, std::uint32_t cabinet) const {
  if (!node.associationKey.empty()) return;
  node.associationKey =
      MakeAssociationKey(*component.definition, instanceIndex, cabinet, context_.host.ServerCabinet());
  EM_TRACE(3, "\nEM_STATUS (QUERY)   :   -> association key = \"%s\"", node.associationKey.c_str());
}

StatusValue SystemScan::Publish(Progress& progress) {
  EM_TRACE(
      2,
      "\n\nEM_STATUS (QUERY)   : --- Calculate subsystem and system status from the components' status values ---\n");
  StatusSnapshot snapshot;
  for (std::size_t i = 0; i < configuration_->subsystems.size(); ++i) {
    const SubsystemDefinition& subsystem = configuration_->subsystems[i];
    const StatusValue status = CalculateSubsystemStatus(*configuration_, subsystem, progress.answers[i]);
    progress.tree.Subsystem(subsystem.name).status = status;
    snapshot.subsystems.insert_or_assign(subsystem.name, status);
    RaiseSystemStatus(*configuration_, subsystem, status, snapshot.system);
  }
  for (const auto& [name, component] : components_) snapshot.components.emplace(name, component.found);
  snapshot.nodes = std::move(progress.tree.Nodes());
  const StatusValue system = snapshot.system;
  context_.tree.Publish(std::move(snapshot));
  return system;
}

ComponentState* SystemScan::StateOf(const std::string& name) {
  const auto component = components_.find(name);
  return component == components_.end() ? nullptr : &component->second;
}

}  // namespace emstatus
