#include "host/module/ComponentPlaces.h"

namespace emstatus::host {

void ComponentPlaces::Learn() {
  for (std::uint32_t subsystem = 0;; ++subsystem) {
    const std::string subsystemId = session_.SubsystemId(subsystem);
    if (subsystemId.empty()) {
      return;
    }
    for (std::uint32_t component = 0;; ++component) {
      std::string componentId = session_.ComponentId(subsystem, component);
      if (componentId.empty()) {
        break;
      }
      places_.try_emplace({subsystemId, std::move(componentId)}, subsystem, component);
    }
  }
}

std::optional<std::pair<std::uint32_t, std::uint32_t>> ComponentPlaces::PlaceOf(
    const std::string& subsystem, const std::string& component) {
  if (places_.empty()) {
    Learn();
  }
  const auto found = places_.find({subsystem, component});
  return found == places_.end() ? std::nullopt : std::optional(found->second);
}

std::string ComponentPlaces::InstanceId(const std::string& subsystem, const std::string& component,
                                        std::uint32_t index, std::uint32_t cabinet) {
  const auto place = PlaceOf(subsystem, component);
  return place ? InstanceIdAt(place->first, place->second, index, cabinet) : std::string();
}

std::string ComponentPlaces::InstanceIdAt(std::uint32_t subsystem, std::uint32_t component,
                                          std::uint32_t index, std::uint32_t cabinet) {
  std::string id = session_.InstanceId(subsystem, component, index, cabinet);
  if (id.empty()) {
    // The module tells instances of the first definition only; those of an alternative are made alike.
    id = session_.InstanceBaseName(subsystem, component) + std::to_string(index) +
         (cabinet == ModuleSession::kServerCabinet ? "" : "-" + std::to_string(cabinet));
  }
  return id;
}

}  // namespace emstatus::host
