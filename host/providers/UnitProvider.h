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

/// systemd units: the required ones, and those that have failed since reading began.
class UnitProvider final : public Provider {
 public:
  /// `required`: names; ".service" is added to one without a type.
  UnitProvider(std::unique_ptr<UnitManager> manager, const std::vector<std::string>& required);

  std::string_view Name() const override { return "systemd units"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;

 private:
  Reading TellSystem();

  const std::unique_ptr<UnitManager> manager_;
  std::set<std::string> required_;
  std::set<std::string> watched_;
};

}  // namespace emstatus::host
