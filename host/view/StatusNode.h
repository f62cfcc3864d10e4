#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/configuration/Rule.h"
#include "host/machine/Machine.h"
#include "host/simulation/SimulationFile.h"

namespace emstatus::host {

/// How much of what a node stands for could be read.
struct Coverage {
  /// Objects whose quality is good.
  std::uint32_t read = 0;
  /// Objects of which something should be known: all but those switched off by intent.
  std::uint32_t total = 0;
  /// Age of the oldest of those that could be read.
  std::chrono::milliseconds oldest{0};

  friend bool operator==(const Coverage&, const Coverage&) = default;
};

/// How many more members of a component's redundancy groups may fail before the component turns red.
struct RedundancyMargin {
  /// Nothing: not known, because the members could not be read.
  std::optional<std::uint32_t> failures;
  /// The group with the smallest margin; empty when the parts belong to none.
  std::string group;
  /// Of that group: parts when it is whole, parts that it cannot do without, parts that work now.
  std::uint32_t members = 0;
  std::uint32_t needed = 0;
  std::uint32_t present = 0;

  friend bool operator==(const RedundancyMargin&, const RedundancyMargin&) = default;
};

/// A node of the module's status tree, and the object that it stands for.
struct StatusNode {
  std::string id;
  std::string designation;
  /// As a simulation names it: a component's name, "Fan0" or "Fan0-2"; of a subsystem its name.
  std::string name;
  /// Where the configuration speaks of it: "Subsystem.Fans", and for components and instances
  /// "Component.Fans".
  std::string section;
  std::uint32_t status = 0;
  std::uint32_t cssStatus = 0;
  std::uint32_t nonCssStatus = 0;
  bool isCss = false;
  /// The status is forced by a simulation.
  bool simulated = false;
  /// The raw state; only leaves have one.
  std::optional<std::uint32_t> objectStatus;
  std::string associationKey;
  std::vector<StatusNode> children;
  std::optional<ObjectView> object;
  /// Since when the status is what it is; nothing when it was so at the first scan.
  std::optional<WallTime> since;
  Coverage coverage;
  /// Of components that have a redundancy rule.
  std::optional<RedundancyMargin> margin;
  /// What made the status of a leaf; nothing when that is not known, or no place in a file.
  std::optional<Rule> rule;
};

/// Reads the tree from the module's JSON text (request 0x2339). Members that are missing stay empty; throws a
/// std::runtime_error when the text is no such tree. [any thread]
StatusNode ReadStatusTree(std::string_view text);

/// Finds the object of each node that has one. [any thread]
void AttachObjects(StatusNode& node, const Machine& machine, std::uint32_t ownCabinet);

/// Counts what could be read, from the leaves up; after AttachObjects. A leaf that has a coverage keeps it.
void CountCoverage(StatusNode& node);

/// Whether the module keeps a status from before for a leaf of which nothing is known now.
bool IsStale(const StatusNode& leaf);

/// Takes away the subsystems of which this machine has no part at all.
void DropAbsent(StatusNode& root);

/// What to call the node: its designation, or the object's name where the module only knows a number.
std::string NodeName(const StatusNode& node);

/// The instance at a place that an event names; null when the tree does not hold it.
const StatusNode* FindInstance(const StatusNode& root, std::string_view subsystem, std::string_view component,
                               std::uint32_t index, std::uint32_t cabinet);

}  // namespace emstatus::host
