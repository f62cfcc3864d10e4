#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <emstatus/CIExtensionModule.h>

#include "host/machine/Machine.h"
#include "host/module/Host.h"

namespace emstatus::host {

/// A started module, from SetCabNr to Stop, and the questions that the host asks it. [main thread]
class ModuleSession {
 public:
  static constexpr std::uint32_t kServerCabinet = 0;

  /// Hands the module its cabinets and starts it. A ModuleError when it refuses its configuration.
  ModuleSession(CIExtensionModule& module, Host& host, Machine& machine);
  ModuleSession(const ModuleSession&) = delete;
  ModuleSession& operator=(const ModuleSession&) = delete;
  /// Tells the module that the host ends, fails what it still waits for, and stops it.
  ~ModuleSession();

  /// Starts the module's own threads.
  void Run() { module_.StartThreads(); }

  /// Makes the module scan at once.
  void WakeUp();

  /// The status tree as JSON text; nothing before the first scan.
  std::optional<std::string> TreeText();

  /// The status last reported for the whole system.
  std::optional<std::uint32_t> SystemStatus();

  /// The status of a component in which redundancy counts, other than in the tree; 0 also when its
  /// alternative answers. Nothing when the module does not know the place.
  std::optional<std::uint32_t> ComponentStatus(std::uint32_t subsystem, std::uint32_t component);

  /// Names for people; empty when the module does not know the place.
  std::string SubsystemName(std::uint32_t subsystem);
  std::string ComponentName(std::uint32_t subsystem, std::uint32_t component);
  std::string InstanceName(std::uint32_t subsystem, std::uint32_t component, std::uint32_t index,
                           std::uint32_t cabinet);

  /// Names in the configuration; empty behind the last one.
  std::string SubsystemId(std::uint32_t subsystem);
  std::string ComponentId(std::uint32_t subsystem, std::uint32_t component);
  /// The instance's ID; empty when the component as first defined has no such instance.
  std::string InstanceId(std::uint32_t subsystem, std::uint32_t component, std::uint32_t index,
                         std::uint32_t cabinet);
  /// What IDs of its instances begin with.
  std::string InstanceBaseName(std::uint32_t subsystem, std::uint32_t component);

 private:
  Answer Ask(const Request& request);
  std::string AskText(const Request& request);

  CIExtensionModule& module_;
  Host& host_;
  Machine& machine_;
};

}  // namespace emstatus::host
