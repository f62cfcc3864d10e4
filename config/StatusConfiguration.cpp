#include "config/StatusConfiguration.h"

#include "platform/CDebugClient.h"

namespace emstatus {

const char* StatusConfiguration::StatusName(StatusValue status) const {
  const auto name = statusNames.find(status);
  return name == statusNames.end() ? "" : name->second.c_str();
}

const ComponentDefinition* StatusConfiguration::FindComponent(std::string_view name) const {
  const auto component = components.find(name);
  return component == components.end() ? nullptr : &component->second;
}

const ComponentDefinition* StatusConfiguration::ComponentAt(std::uint32_t subsystem,
                                                            std::uint32_t component) const {
  if (subsystem >= subsystems.size()) {
    EM_TRACE(2, "\nEM_STATUS           : ERROR! Sybsystem index %d out of range!",
             static_cast<int>(subsystem));
    return nullptr;
  }
  const auto& names = subsystems[subsystem].componentNames;
  if (component >= names.size()) {
    EM_TRACE(2,
             "\nEM_STATUS           : ERROR! Component index %d for subsystem %d is out of range (0...%d)!",
             static_cast<int>(component), static_cast<int>(subsystem),
             names.empty() ? 0 : static_cast<int>(names.size() - 1));
    return nullptr;
  }
  return FindComponent(names[component]);
}

}  // namespace emstatus
