#include "host/commands/FaultSurvey.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "host/machine/Utf8.h"
#include "host/view/AssociationKey.h"

namespace emstatus::host {
namespace {

constexpr std::uint32_t kGoodStatus = 1;
/// Bounds for configurations with a great AdvancedPollingCycles.
constexpr std::size_t kMostCycles = 1000;
constexpr std::size_t kMostFaultScans = 64;
/// A scan that shows the fault, and one more to see that this was all.
constexpr std::size_t kFewestFaultScans = 2;

bool IsSameResult(const ScanResult& one, const ScanResult& other) {
  return one.tree == other.tree && one.systemStatus == other.systemStatus && one.led == other.led;
}

std::string PartName(const StatusNode& node) {
  const bool inCabinet = node.object && node.object->address.cabinet != 0;
  return CleanUtf8(NodeName(node)) +
         (inCabinet ? " (cabinet " + std::to_string(node.object->address.cabinet) + ")" : "");
}

std::string LeafName(const StatusNode& subsystem, const StatusNode& component, const StatusNode& leaf) {
  const std::string name = CleanUtf8(NodeName(subsystem)) + ", " + CleanUtf8(NodeName(component));
  return &leaf == &component ? name : name + ", " + PartName(leaf);
}

void CountEvents(const ScanResult& result, FaultEffect& effect) {
  for (const StatusChange& change : result.changes) {
    switch (change.what) {
      case StatusChange::What::Instance:
        ++effect.instanceEvents;
        break;
      case StatusChange::What::System:
        ++effect.systemEvents;
        break;
      case StatusChange::What::Led:
        ++effect.ledChanges;
        break;
    }
  }
}

void CollectStatuses(const StatusNode& node, std::map<std::string, std::uint32_t>& statuses) {
  statuses[node.id] = node.status;
  for (const StatusNode& child : node.children) {
    CollectStatuses(child, statuses);
  }
}

bool IsWanted(const FaultPlace& place, const std::vector<std::string>& components) {
  return components.empty() || std::ranges::any_of(components, [&](const std::string& name) {
           return place.component == name || place.section == "Component." + name;
         });
}

}  // namespace

FaultSurvey::FaultSurvey(FrozenHost& host, FrozenMachine& machine, const StatusWords& words,
                         std::int32_t cycles)
    : host_(host),
      machine_(machine),
      words_(words),
      cycles_(std::min(std::size_t(std::max(cycles, 0)), kMostCycles)) {}

/// Names are asked in the first cycles only, and components that begin as inactive in the last of them.
bool FaultSurvey::Settle() {
  std::optional<ScanResult> before;
  for (std::size_t scan = 0; scan <= 3 * cycles_ + 2; ++scan) {
    machine_.ForgetAsked();
    auto result = host_.Scan();
    if (!result) {
      return false;
    }
    if (scan > cycles_ && before && IsSameResult(*before, *result)) {
      good_ = std::move(*result);
      return true;
    }
    before = std::move(result);
  }
  throw std::runtime_error("the module's status does not come to rest although nothing changes.");
}

std::optional<FaultTable> FaultSurvey::Run(const std::vector<std::string>& components) {
  machine_.Restore();
  if (!Settle()) {
    return std::nullopt;
  }
  FaultTable table;
  table.system = good_.systemStatus;
  table.led = good_.led;
  CollectParts(host_.NamedTree(good_), table);
  NoteUnasked(table);
  CheckNames(components);
  for (const Part& part : parts_) {
    if (!IsWanted(part.place, components)) {
      continue;
    }
    for (const Fault fault : FaultsOf(machine_.Find(part.place.address)->reading, part.question)) {
      const auto effect = Effect(part, fault);
      if (!effect) {
        return std::nullopt;
      }
      AddFault(table, part.place, fault, *effect);
    }
  }
  return table;
}

void FaultSurvey::CollectParts(const StatusNode& root, FaultTable& table) {
  const auto forEachComponent = [&](const auto& visit) {
    for (const StatusNode& subsystem : root.children) {
      for (const StatusNode& component : subsystem.children) {
        visit(subsystem, component);
      }
    }
  };
  const auto remember = [&](const StatusNode& node) {
    if (node.object) {
      shown_.insert(node.object->address);
    }
  };
  forEachComponent([&](const StatusNode&, const StatusNode& component) {
    remember(component);
    std::ranges::for_each(component.children, remember);
  });
  forEachComponent([&](const StatusNode& subsystem, const StatusNode& component) {
    if (component.children.empty()) {
      CollectLeaf(subsystem, component, component, table);
    }
    for (const StatusNode& leaf : component.children) {
      CollectLeaf(subsystem, component, leaf, table);
    }
  });
}

void FaultSurvey::CollectLeaf(const StatusNode& subsystem, const StatusNode& component,
                              const StatusNode& leaf, FaultTable& table) {
  const std::string name = LeafName(subsystem, component, leaf);
  leaves_[leaf.id] = {name, leaf.status};
  if (leaf.status != kGoodStatus) {
    table.neverGood.push_back(name + ": " + words_.Of(leaf.status));
  }
  const auto question = QuestionOfKey(leaf.associationKey).value_or(Question::State);
  const auto hidden = &leaf == &component ? HiddenObjects(component) : std::vector<ObjectView>{};
  std::vector<ObjectView> objects;
  // A key may be that of an alternative that answered earlier.
  if (leaf.object && machine_.WasAsked().contains({leaf.object->address, question})) {
    objects.push_back(*leaf.object);
  }
  objects.insert(objects.end(), hidden.begin(), hidden.end());
  if (objects.empty()) {
    table.notForced.push_back(name);
  }
  for (const ObjectView& object : objects) {
    StatusNode named = leaf;
    named.object = object;
    named.designation = hidden.empty() ? leaf.designation : object.reading.name;
    Part part{{CleanUtf8(NodeName(subsystem)), CleanUtf8(NodeName(component)), component.section,
               PartName(named), object.address},
              question,
              leaf.id,
              component.id,
              subsystem.id,
              component.name,
              subsystem.name,
              {}};
    ReadStatuses(part, good_, part.good);
    parts_.push_back(std::move(part));
  }
}

/// A component with a fixed number of instances is one node, whose key names one of them at most.
std::vector<ObjectView> FaultSurvey::HiddenObjects(const StatusNode& component) {
  const auto question = QuestionOfKey(component.associationKey);
  const auto key = ObjectOfKey(component.associationKey, ModuleSession::kServerCabinet);
  std::vector<ObjectView> objects;
  for (const auto& [address, asked] : machine_.WasAsked()) {
    const bool alike = key && question == asked && address.objectClass == key->objectClass;
    if (alike && shown_.insert(address).second) {
      objects.push_back(*machine_.Find(address));
    }
  }
  return objects;
}

void FaultSurvey::NoteUnasked(FaultTable& table) const {
  std::set<ObjectAddress> asked;
  for (const auto& [address, question] : machine_.WasAsked()) {
    asked.insert(address);
  }
  for (const ObjectView& object : machine_.Objects()) {
    if (!asked.contains(object.address)) {
      const std::uint32_t cabinet = object.address.cabinet;
      table.notAsked.push_back(std::string(RowOf(object.address.objectClass).word) + ", " +
                               CleanUtf8(object.reading.name) +
                               (cabinet == 0 ? "" : " (cabinet " + std::to_string(cabinet) + ")"));
    }
  }
}

void FaultSurvey::CheckNames(const std::vector<std::string>& components) const {
  for (const std::string& name : components) {
    if (std::ranges::none_of(parts_, [&](const Part& part) { return IsWanted(part.place, {name}); })) {
      std::string list;
      for (const Part& part : parts_) {
        const std::string line = "\n  " + part.componentName;
        list += (list + "\n").find(line + "\n") == std::string::npos ? line : "";
      }
      throw std::runtime_error("no component with parts is called " + name +
                               ", which --component names. There are:" + list);
    }
  }
}

std::optional<FaultEffect> FaultSurvey::Effect(const Part& part, Fault fault) {
  FaultEffect effect;
  machine_.Force(part.place.address, fault);
  const auto result = Watch(fault, effect);
  if (!result) {
    return std::nullopt;
  }
  ReadStatuses(part, *result, effect);
  JudgeWhetherItShows(part, effect);
  machine_.Restore();
  return Recover(effect) ? std::optional(effect) : std::nullopt;
}

std::optional<ScanResult> FaultSurvey::Watch(Fault fault, FaultEffect& effect) {
  const std::size_t fewest =
      fault == Fault::NoAnswer ? std::max(cycles_ + 1, kFewestFaultScans) : kFewestFaultScans;
  ScanResult last = good_;
  for (std::size_t scan = 1;; ++scan) {
    auto result = host_.Scan();
    if (!result) {
      return std::nullopt;
    }
    CountEvents(*result, effect);
    if (!IsSameResult(last, *result) || !result->changes.empty()) {
      effect.scans = scan;
    }
    last = std::move(*result);
    const bool atRest = scan >= fewest && effect.scans < scan;
    if (atRest || scan >= kMostFaultScans) {
      return last;
    }
  }
}

void FaultSurvey::ReadStatuses(const Part& part, const ScanResult& result, FaultEffect& effect) {
  std::map<std::string, std::uint32_t> statuses;
  CollectStatuses(ReadStatusTree(result.tree), statuses);
  effect.part = statuses[part.nodeId];
  effect.subsystem = statuses[part.subsystemNode];
  // The module does not tell the status of an alternative that answers; then the tree has it.
  const auto judged = host_.ComponentStatus(part.subsystemName, part.componentName);
  effect.component = judged.value_or(0) != 0 ? *judged : statuses[part.componentNode];
  effect.system = result.systemStatus;
  effect.led = result.led;
  for (const auto& [id, leaf] : leaves_) {
    if (id != part.nodeId && statuses[id] != leaf.status) {
      effect.others.push_back(leaf.name);
    }
  }
}

void FaultSurvey::JudgeWhetherItShows(const Part& part, FaultEffect& effect) const {
  const auto statuses = [](const FaultEffect& of) {
    return std::array{of.part, of.component, of.subsystem, of.system, of.led};
  };
  effect.shows = statuses(effect) != statuses(part.good) || !effect.others.empty() ||
                 effect.instanceEvents + effect.systemEvents + effect.ledChanges != 0;
}

bool FaultSurvey::Recover(FaultEffect& effect) {
  std::optional<ScanResult> result;
  for (std::size_t scan = 0; scan <= 2 * cycles_ + 1; ++scan) {
    result = host_.Scan();
    if (!result) {
      return false;
    }
    if (IsSameResult(good_, *result)) {
      return true;
    }
  }
  effect.ends = false;
  // What follows is compared with what is left.
  good_ = std::move(*result);
  return true;
}

}  // namespace emstatus::host
