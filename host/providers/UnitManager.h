#pragma once

#include <memory>
#include <string>
#include <vector>

namespace emstatus::host {

/// The state of one unit, in systemd's words.
struct UnitState {
  std::string name;
  std::string description;
  /// "loaded", "not-found", "masked", "error", ...
  std::string load;
  /// "active", "inactive", "failed", "activating", "deactivating", "reloading".
  std::string active;
  /// Finer, by the type of the unit ("running", "exited", "dead", "auto-restart").
  std::string sub;
};

/// The service manager of a machine, as far as it is asked. Calls throw std::system_error when there is no
/// answer. [worker of one provider]
class UnitManager {
 public:
  UnitManager() = default;
  UnitManager(const UnitManager&) = delete;
  UnitManager& operator=(const UnitManager&) = delete;
  virtual ~UnitManager() = default;

  /// Whether the machine is run by it, and it can be asked.
  virtual bool IsThere() = 0;
  /// "running", "degraded", "starting", "maintenance", "stopping", ...
  virtual std::string SystemState() = 0;
  virtual std::vector<UnitState> FailedUnits() = 0;
  /// One state a name, under the unit's first name; one that is not installed has the load state "not-found".
  /// A template, or what is no name of a unit, may make the call fail.
  virtual std::vector<UnitState> Units(const std::vector<std::string>& names) = 0;
  /// All units that are loaded and whose names match a pattern ("getty@*.service").
  virtual std::vector<UnitState> UnitsLike(const std::string& pattern) = 0;
};

/// systemd, over its D-Bus interface; null in a build without its library. Nothing is connected yet.
std::unique_ptr<UnitManager> MakeSystemdManager();

}  // namespace emstatus::host
