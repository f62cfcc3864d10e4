#include "host/view/NodeRules.h"

#include "host/view/AssociationKey.h"

namespace emstatus::host {
namespace {

constexpr const char* kAlternativeSuffix = ".alt";

/// Whether the status of a leaf with this key was asked for by this definition.
bool HasAsked(const Definition& definition, const ObjectAddress& asked) {
  const auto& request = definition.statusRequest.element;
  return request && request->HexNumber("OC") == std::uint32_t(asked.objectClass);
}

const Definition* DefinitionThatAnswered(const StatusNode& component, const Configuration& configuration) {
  const Definition* primary = configuration.FindComponent(component.name);
  const Definition* alternative = configuration.FindComponent(component.name + kAlternativeSuffix);
  if (primary == nullptr || alternative == nullptr) {
    return primary;
  }
  const StatusNode& leaf = component.children.empty() ? component : component.children.front();
  const auto asked = ObjectOfKey(leaf.associationKey, 0);
  return asked && !HasAsked(*primary, *asked) && HasAsked(*alternative, *asked) ? alternative : primary;
}

std::optional<Rule> RuleOfLeaf(const StatusNode& leaf, const Configuration& configuration) {
  if (leaf.simulated || !leaf.objectStatus) {
    return std::nullopt;
  }
  auto rule = configuration.RuleOf(leaf.section, std::int32_t(*leaf.objectStatus), leaf.status);
  if (!rule && leaf.object) {
    // A component without instances is shown with the status that redundancy leaves it.
    const auto state = std::int32_t(RedundancyStateOf(leaf.object->reading));
    rule = configuration.RedundancyRuleOf(leaf.section, state);
  }
  return rule;
}

}  // namespace

void ApplyRules(StatusNode& root, const Configuration& configuration) {
  for (StatusNode& subsystem : root.children) {
    for (StatusNode& component : subsystem.children) {
      if (const Definition* definition = DefinitionThatAnswered(component, configuration)) {
        component.section = definition->section;
      }
      if (component.children.empty()) {
        component.rule = RuleOfLeaf(component, configuration);
      }
      for (StatusNode& leaf : component.children) {
        leaf.section = component.section;
        leaf.rule = RuleOfLeaf(leaf, configuration);
      }
    }
  }
}

}  // namespace emstatus::host
