#include "host/view/NodeNames.h"

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

struct InstancePlace {
  std::uint32_t cabinet = 0;
  std::uint32_t index = 0;
};

/// Of an instance's name, "CCC-II".
std::optional<InstancePlace> PlaceOf(std::string_view name) {
  InstancePlace place;
  const char* const end = name.data() + name.size();
  const auto cabinet = std::from_chars(name.data(), end, place.cabinet);
  if (cabinet.ec != std::errc() || cabinet.ptr == end || *cabinet.ptr != '-') {
    return std::nullopt;
  }
  const auto index = std::from_chars(cabinet.ptr + 1, end, place.index);
  return index.ec == std::errc() && index.ptr == end ? std::optional(place) : std::nullopt;
}

void NameComponent(StatusNode& node, const StatusNode& subsystem, const InstanceIdOf& instanceId) {
  node.name = NameOf(node, subsystem);
  node.section = "Component." + node.name;
  for (StatusNode& child : node.children) {
    child.section = node.section;
    if (const auto place = PlaceOf(NameOf(child, node))) {
      child.name = instanceId(subsystem.name, node.name, place->index, place->cabinet);
    }
  }
}

}  // namespace

void NameNodes(StatusNode& root, const InstanceIdOf& instanceId) {
  root.section = "System";
  for (StatusNode& subsystem : root.children) {
    subsystem.name = NameOf(subsystem, root);
    subsystem.section = "Subsystem." + subsystem.name;
    for (StatusNode& component : subsystem.children) {
      NameComponent(component, subsystem, instanceId);
    }
  }
}

}  // namespace emstatus::host
