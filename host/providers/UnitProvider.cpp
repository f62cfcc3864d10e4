#include "host/providers/UnitProvider.h"

#include <algorithm>
#include <utility>

#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

std::string WithType(const std::string& name) {
  return name.find('.') == std::string::npos ? name + ".service" : name;
}

std::string StateText(const UnitState& unit) {
  return unit.active + (unit.sub.empty() ? "" : " (" + unit.sub + ")");
}

}  // namespace

Reading JudgeUnit(const UnitState& unit, bool required) {
  Reading reading;
  reading.objectClass = ObjectClass::ServiceUnit;
  reading.id = unit.name;
  reading.name = unit.name;
  reading.quality = Quality::Good;
  reading.customerServiceable = true;
  reading.mayGo = !required;
  const bool isMissing =
      unit.load == "not-found" || unit.load == "masked" || unit.load == "error" || unit.load == "bad-setting";
  if (unit.active == "failed") {
    reading.condition = required ? Condition::Critical : Condition::Warning;
    reading.reason = "has failed, " + std::string(required ? "active" : "no failure") + " expected";
    reading.advice = "see why: systemctl status " + unit.name + "; then systemctl restart or reset-failed";
  } else if (unit.active == "activating" && unit.sub == "auto-restart") {
    reading.condition = required ? Condition::Critical : Condition::Warning;
    reading.reason = "ended and waits to be started again, active expected";
    reading.advice = "see why: systemctl status " + unit.name;
  } else if (required && isMissing && unit.active != "active") {
    reading.condition = Condition::Critical;
    reading.reason = "cannot be started (" + unit.load + "), though it is named as required";
    reading.advice = "install or unmask it, or take it out of emhost's list";
  } else if (required &&
             (unit.active == "activating" || unit.active == "deactivating" || unit.active == "reloading")) {
    reading.condition = unit.active == "reloading" ? Condition::Good : Condition::Warning;
    reading.reason = "is " + StateText(unit) + ", active expected";
  } else if (required && unit.active != "active") {
    reading.condition = Condition::Critical;
    reading.reason = "is " + StateText(unit) + ", active expected";
    reading.advice = "start it: systemctl start " + unit.name;
  }
  return reading;
}

UnitProvider::UnitProvider(std::unique_ptr<UnitManager> manager, const std::vector<std::string>& required)
    : manager_(std::move(manager)) {
  std::ranges::transform(required, std::inserter(required_, required_.end()), WithType);
  watched_ = required_;
}

std::vector<Reading> UnitProvider::Read(const ReadContext&) {
  std::vector<Reading> readings;
  if (!manager_->IsThere()) {
    for (const std::string& name : required_) {
      Reading& reading = readings.emplace_back();
      reading.objectClass = ObjectClass::ServiceUnit;
      reading.id = reading.name = name;
      SetUnknown(reading, Quality::Late,
                 "systemd cannot be asked: it does not run this machine, or there is no system bus");
      reading.advice = "take it out of emhost's list, or name its program as a required process";
    }
    return readings;
  }
  readings.push_back(TellSystem());
  for (const UnitState& unit : manager_->FailedUnits()) {
    watched_.insert(unit.name);
  }
  if (!watched_.empty()) {
    for (const UnitState& unit : manager_->Units({watched_.begin(), watched_.end()})) {
      const bool required = required_.contains(unit.name);
      if (unit.load == "not-found" && unit.active != "failed" && !required) {
        watched_.erase(unit.name);
      } else {
        readings.push_back(JudgeUnit(unit, required));
      }
    }
  }
  return readings;
}

// Failed units stand for themselves: here it is only told how far the machine is.
Reading UnitProvider::TellSystem() {
  Reading reading;
  reading.objectClass = ObjectClass::ServiceUnit;
  reading.id = "systemd";
  reading.name = "system state";
  reading.quality = Quality::Good;
  const std::string state = manager_->SystemState();
  if (state == "maintenance" || state == "offline") {
    reading.condition = Condition::Critical;
    reading.reason = "the system is in state " + state + ", running expected";
    reading.advice = "see what stopped it from starting: journalctl -b -p err";
  } else if (state != "running" && state != "degraded") {
    reading.reason = "the system is " + state;
  }
  return reading;
}

}  // namespace emstatus::host
