#include <algorithm>

#include "host/view/AssociationKey.h"
#include "host/view/NodeRules.h"

namespace emstatus::host {
namespace {

void AttachAll(StatusNode& node, const Definition& definition, const Machine& machine,
               std::uint32_t ownCabinet) {
  const auto first = ObjectOfKey(node.associationKey, ownCabinet);
  if (!first) {
    return;
  }
  std::vector<std::uint32_t> cabinets{ownCabinet};
  if (definition.handlesCabinets) {
    const auto more = machine.ExtensionCabinets();
    cabinets.insert(cabinets.end(), more.begin(), more.end());
  }
  Coverage all;
  std::optional<ObjectView> decisive;
  for (const std::uint32_t cabinet : cabinets) {
    const std::uint32_t base = definition.instanceBaseIndex;
    for (std::uint32_t index = base; index < base + std::uint32_t(definition.nrInstances); ++index) {
      StatusNode part;
      part.associationKey = node.associationKey;
      part.object = machine.Find({first->objectClass, index, cabinet});
      CountCoverage(part);
      all.read += part.coverage.read;
      all.total += part.coverage.total;
      all.oldest = std::max(all.oldest, part.coverage.oldest);
      if (part.object &&
          (!decisive || (std::uint32_t(RawStateOf(decisive->reading)) != node.objectStatus &&
                         std::uint32_t(RawStateOf(part.object->reading)) == node.objectStatus))) {
        decisive = part.object;
      }
    }
  }
  node.coverage = all;
  node.object = decisive;
}

}  // namespace

void AttachConstantObjects(StatusNode& root, const Configuration& configuration, const Machine& machine,
                           std::uint32_t ownCabinet) {
  for (StatusNode& subsystem : root.children) {
    for (StatusNode& component : subsystem.children) {
      const Definition* definition = configuration.FindSection(component.section);
      if (definition != nullptr && definition->nrInstances > 0 && component.children.empty()) {
        AttachAll(component, *definition, machine, ownCabinet);
      }
    }
  }
}

}  // namespace emstatus::host
