#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/commands/FrozenHost.h"
#include "host/machine/FrozenMachine.h"
#include "host/view/FaultTable.h"
#include "host/view/StatusNode.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

/// Makes every part of a frozen machine fail in every way, one after the other, and notes what comes of it.
/// [main thread]
class FaultSurvey {
 public:
  /// `cycles` is AdvancedPollingCycles of the configuration, after which silent components are treated in
  /// another way. Host, machine and words must outlive this.
  FaultSurvey(FrozenHost& host, FrozenMachine& machine, const StatusWords& words, std::int32_t cycles);

  /// The faults of all components, or of those with one of these names (in the configuration, or for people).
  /// Nothing when a stop signal came. Throws a std::runtime_error for a name that no component in the tree
  /// has, and when the module does not come to rest although nothing changes.
  std::optional<FaultTable> Run(const std::vector<std::string>& components);

 private:
  /// What is to be made fail, and where it shows.
  struct Part {
    FaultPlace place;
    Question question;
    std::string nodeId;
    std::string componentNode;
    std::string subsystemNode;
    /// In the configuration.
    std::string componentName;
    std::string subsystemName;
    /// With everything good.
    FaultEffect good;
  };
  struct Leaf {
    std::string name;
    std::uint32_t status = 0;
  };

  bool Settle();
  void CollectParts(const StatusNode& root, FaultTable& table);
  void CollectLeaf(const StatusNode& subsystem, const StatusNode& component, const StatusNode& leaf,
                   FaultTable& table);
  std::vector<ObjectView> HiddenObjects(const StatusNode& component);
  void NoteUnasked(FaultTable& table) const;
  void CheckNames(const std::vector<std::string>& components) const;

  std::optional<FaultEffect> Effect(const Part& part, Fault fault);
  /// Scans until the fault shows in full; what the last scan left. Fills in events and scans.
  std::optional<ScanResult> Watch(Fault fault, FaultEffect& effect);
  void ReadStatuses(const Part& part, const ScanResult& result, FaultEffect& effect);
  void JudgeWhetherItShows(const Part& part, FaultEffect& effect) const;
  /// False when a stop signal came.
  bool Recover(FaultEffect& effect);

  FrozenHost& host_;
  FrozenMachine& machine_;
  const StatusWords& words_;
  const std::size_t cycles_;
  /// What the last scan without a fault left.
  ScanResult good_;
  std::vector<Part> parts_;
  /// By the id of their node.
  std::map<std::string, Leaf> leaves_;
  /// Objects that a node of the tree names.
  std::set<ObjectAddress> shown_;
};

}  // namespace emstatus::host
