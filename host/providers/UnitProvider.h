#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/providers/Provider.h"
#include "host/providers/UnitManager.h"

namespace emstatus::host {

/// The reading of a unit. One that is required must be active; any other must only not have failed. [any
/// thread]
Reading JudgeUnit(const UnitState& unit, bool required);

/// systemd units: the required ones, and those that have failed since reading began. Failed instances of one
/// template are one object, since some have a new name each time.
class UnitProvider final : public Provider {
 public:
  /// `manager`: null where there is none to ask. `required`: names; ".service" is added to one without a
  /// type. Of a template ("getty@"), one instance must be active.
  UnitProvider(std::unique_ptr<UnitManager> manager, const std::vector<std::string>& required);

  std::string_view Name() const override { return "systemd units"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;

 private:
  std::vector<Reading> TellUnanswered() const;
  Reading TellSystem();
  /// Adds to `told` the names under which systemd knows the unit.
  Reading TellRequired(const std::string& name, std::set<std::string>& told);
  Reading TellTemplate(const std::string& name, std::set<std::string>& told);
  void TellFailed(std::vector<Reading>& readings, const std::set<std::string>& told);
  void TellFailedInstances(std::vector<Reading>& readings, const std::vector<std::string>& names);

  const std::unique_ptr<UnitManager> manager_;
  std::set<std::string> required_;
  /// Others that have failed, and templates of which instances have.
  std::set<std::string> watched_;
  std::set<std::string> watchedTemplates_;
  /// As it was told last.
  std::vector<Reading> last_;
};

}  // namespace emstatus::host
