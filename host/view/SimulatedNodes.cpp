#include "host/view/SimulatedNodes.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace emstatus::host {
namespace {

/// The name that the configuration gives the node: its ID, without the parent's where two names met.
std::string_view NameOf(const StatusNode& node, const StatusNode& parent) {
  std::string_view name = node.id;
  while (name.starts_with(parent.id + "/")) {
    name.remove_prefix(parent.id.size() + 1);
  }
  return name;
}

struct Place {
  std::uint32_t cabinet = 0;
  std::uint32_t index = 0;
};

/// Of an instance's name, "CCC-II".
std::optional<Place> PlaceOf(std::string_view name) {
  Place place;
  const char* const end = name.data() + name.size();
  const auto cabinet = std::from_chars(name.data(), end, place.cabinet);
  if (cabinet.ec != std::errc() || cabinet.ptr == end || *cabinet.ptr != '-') {
    return std::nullopt;
  }
  const auto index = std::from_chars(cabinet.ptr + 1, end, place.index);
  return index.ec == std::errc() && index.ptr == end ? std::optional(place) : std::nullopt;
}

class Marker {
 public:
  Marker(SimulationState& simulation, const InstanceIdOf& instanceId)
      : simulation_(simulation), instanceId_(instanceId) {
    for (const auto& [name, part] : simulation.parts) {
      simulation_.absent.insert(name);
    }
  }

  void MarkComponent(StatusNode& node, const StatusNode& subsystem, const StatusNode& root) {
    const std::string name(NameOf(node, subsystem));
    if (node.children.empty()) {
      Mark(node, name);
    }
    for (StatusNode& child : node.children) {
      if (const auto place = PlaceOf(NameOf(child, node))) {
        Mark(child, instanceId_(std::string(NameOf(subsystem, root)), name, place->index, place->cabinet));
      }
    }
  }

 private:
  void Mark(StatusNode& node, const std::string& name) {
    node.simulated = simulation_.parts.contains(name);
    simulation_.absent.erase(name);
  }

  SimulationState& simulation_;
  const InstanceIdOf& instanceId_;
};

}  // namespace

void MarkSimulated(StatusNode& root, SimulationState& simulation, const InstanceIdOf& instanceId) {
  if (!simulation.InForce()) {
    return;
  }
  Marker marker(simulation, instanceId);
  for (StatusNode& subsystem : root.children) {
    for (StatusNode& component : subsystem.children) {
      marker.MarkComponent(component, subsystem, root);
    }
  }
}

}  // namespace emstatus::host
