#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "config/Simulation.h"
#include "config/StatusConfiguration.h"
#include "status/ComponentState.h"
#include "status/HostQuery.h"

namespace emstatus {

/// What kind of cycle a scan runs in.
struct CycleKind {
  /// Failures are not yet told; names and CSS properties are asked for.
  bool probing = false;
  /// Inactive components are asked, too.
  bool checkInactive = false;
};

/// What every component query of one scan goes by.
struct QueryEnvironment {
  const StatusConfiguration& configuration;
  const Simulation& simulation;
  const HostQuery& host;
  const std::vector<std::uint32_t>& cabinets;
  const std::atomic<bool>& switchShutdown;
  CycleKind cycle;
};

/// Asks the host for the status of one component, all its cabinets and instances. Made for one scan of one
/// component. [polling thread]
class ComponentQuery {
 public:
  ComponentQuery(const QueryEnvironment& environment, ComponentState& component)
      : environment_(environment), definition_(*component.definition), component_(component) {}

  /// True when at least one status was answered. Failures are traced and counted; after too many of them the
  /// component becomes inactive.
  bool QueryComponentStatus();

 private:
  /// One status request: the index that is asked and what stands for it in the requests.
  struct Position {
    std::uint32_t index;
    std::uint32_t cabinet;
    QueryTarget target;
  };

  bool IsAsked();
  void QueryCabinet(std::uint32_t cabinet);
  std::int64_t NumberOfInstances(std::uint32_t cabinet);
  /// Whether a next object follows.
  bool QueryInstance(std::uint32_t index, std::uint32_t cabinet);
  bool HasTargetHost(const Position& position);
  ComponentInstance& RecordInstance(const Position& position, std::int32_t rawValue);
  void AskDesignation(const Position& position, ComponentInstance& instance);
  MappedStatus MapRawValue(std::int32_t rawValue) const;
  void Simulate(ComponentInstance& instance, MappedStatus& mapped);
  std::uint32_t& CssFlag(ComponentInstance& instance);
  void AskDisplayName(const Position& position);
  void AskCss(const Position& position, ComponentInstance& instance);
  void MergeInstance(const Position& position, std::int32_t rawValue, const MappedStatus& mapped);
  void AskRedundancy(const Position& position);
  void FinishCabinet();
  void JudgeFailure();
  bool CountFailures();

  const QueryEnvironment& environment_;
  const ComponentDefinition& definition_;
  ComponentState& component_;
  bool severalCabinets_ = false;
  StatusValue newStatus_ = NoStatus;
  bool result_ = false;
};

}  // namespace emstatus
