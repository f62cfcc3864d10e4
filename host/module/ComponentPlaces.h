#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "host/module/ModuleSession.h"

namespace emstatus::host {

/// Where the components stand in the module's lists, by which it is asked about their instances. Learnt from
/// the module when it is first needed; the session must outlive this. [main thread]
class ComponentPlaces {
 public:
  explicit ComponentPlaces(ModuleSession& session) : session_(session) {}

  /// The ID of an instance, by the names of subsystem and component in the configuration; empty when there is
  /// no such component.
  std::string InstanceId(const std::string& subsystem, const std::string& component, std::uint32_t index,
                         std::uint32_t cabinet);

  /// The positions of subsystem and component, by the same names; nothing when there is no such component.
  std::optional<std::pair<std::uint32_t, std::uint32_t>> PlaceOf(const std::string& subsystem,
                                                                 const std::string& component);

  std::string InstanceIdAt(std::uint32_t subsystem, std::uint32_t component, std::uint32_t index,
                           std::uint32_t cabinet);

 private:
  using Names = std::pair<std::string, std::string>;
  using Place = std::pair<std::uint32_t, std::uint32_t>;

  void Learn();

  ModuleSession& session_;
  std::map<Names, Place> places_;
};

}  // namespace emstatus::host
