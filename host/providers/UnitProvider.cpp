#include "host/providers/UnitProvider.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "host/providers/ReadFault.h"
#include "host/providers/UnitName.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kMostNames = 5;

Reading UnitNamed(const std::string& name) {
  Reading reading;
  reading.objectClass = ObjectClass::ServiceUnit;
  reading.id = reading.name = name;
  return reading;
}

std::string StateText(const UnitState& unit) {
  return unit.active + (unit.sub.empty() ? "" : " (" + unit.sub + ")");
}

}  // namespace

Reading JudgeUnit(const UnitState& unit, bool required) {
  Reading reading = UnitNamed(unit.name);
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
  std::ranges::transform(required, std::inserter(required_, required_.end()), WithUnitType);
}

std::vector<Reading> UnitProvider::Read(const ReadContext&) {
  if (!manager_ || !manager_->IsThere()) {
    return TellUnanswered();
  }
  std::vector<Reading> readings = {TellSystem()};
  std::set<std::string> told;
  for (const std::string& name : required_) {
    readings.push_back(TellRequired(name, told));
  }
  TellFailed(readings, told);
  last_ = readings;
  return readings;
}

// Of none it is known any more how it is.
std::vector<Reading> UnitProvider::TellUnanswered() const {
  std::vector<Reading> readings = last_;
  if (last_.empty()) {
    std::ranges::transform(required_, std::back_inserter(readings), UnitNamed);
  }
  for (Reading& reading : readings) {
    SetUnknown(reading, Quality::Late,
               "systemd cannot be asked: it does not run this machine, or there is no system bus");
    reading.advice = last_.empty() ? "take it out of emhost's list, or name its program as a required process"
                                   : "look whether the system bus runs";
  }
  return readings;
}

Reading UnitProvider::TellRequired(const std::string& name, std::set<std::string>& told) {
  if (!IsUnitName(name)) {
    Reading reading = UnitNamed(name);
    reading.quality = Quality::Good;
    reading.condition = Condition::Critical;
    reading.reason = "is no name of a unit, though it is named as required";
    reading.advice = "mend it in emhost's list; systemctl list-units shows the names";
    return reading;
  }
  if (TemplateOf(name) == name) {
    return TellTemplate(name, told);
  }
  const std::vector<UnitState> states = manager_->Units({name});
  UnitState state = states.empty() ? UnitState{name, "", "not-found", "inactive", "dead"} : states.front();
  // Its first name, where the required one is another.
  told.insert(state.name);
  state.name = name;
  return JudgeUnit(state, true);
}

Reading UnitProvider::TellTemplate(const std::string& name, std::set<std::string>& told) {
  const std::size_t at = name.find('@') + 1;
  const std::vector<UnitState> instances = manager_->UnitsLike(name.substr(0, at) + "*" + name.substr(at));
  // The best of them decides.
  Reading best = JudgeUnit({name, "", "loaded", "inactive", "no instance"}, true);
  best.advice = "start one: systemctl start " + name.substr(0, at) + "NAME" + name.substr(at);
  for (UnitState instance : instances) {
    told.insert(instance.name);
    instance.name = name;
    Reading reading = JudgeUnit(instance, true);
    if (reading.condition < best.condition) {
      best = std::move(reading);
    }
  }
  return best;
}

void UnitProvider::TellFailed(std::vector<Reading>& readings, const std::set<std::string>& told) {
  std::vector<std::string> instances;
  for (const UnitState& unit : manager_->FailedUnits()) {
    if (told.contains(unit.name)) {
      continue;
    }
    if (TemplateOf(unit.name)) {
      instances.push_back(unit.name);
    } else {
      watched_.insert(unit.name);
    }
  }
  TellFailedInstances(readings, instances);
  if (watched_.empty()) {
    return;
  }
  for (const UnitState& unit : manager_->Units({watched_.begin(), watched_.end()})) {
    if (unit.load == "not-found" && unit.active != "failed") {
      watched_.erase(unit.name);
    } else {
      readings.push_back(JudgeUnit(unit, false));
    }
  }
}

void UnitProvider::TellFailedInstances(std::vector<Reading>& readings,
                                       const std::vector<std::string>& names) {
  std::map<std::string, std::vector<std::string>> failed;
  for (const std::string& name : names) {
    failed[*TemplateOf(name)].push_back(name);
  }
  for (const auto& [name, instances] : failed) {
    watchedTemplates_.insert(name);
  }
  for (const std::string& name : watchedTemplates_) {
    Reading reading = JudgeUnit({name, "", "loaded", "active", ""}, false);
    const std::vector<std::string>& instances = failed[name];
    if (!instances.empty()) {
      reading.condition = Condition::Warning;
      reading.reason = Format("%zu of its instances have failed, no failure expected:", instances.size());
      for (std::size_t at = 0; at < std::min(instances.size(), kMostNames); ++at) {
        reading.reason += (at == 0 ? " " : ", ") + instances[at];
      }
      reading.reason += instances.size() > kMostNames ? ", …" : "";
      reading.advice =
          "see why: systemctl status " + instances.front() + "; then systemctl restart or reset-failed";
    }
    readings.push_back(std::move(reading));
  }
}

// Failed units stand for themselves: here it is only told how far the machine is.
Reading UnitProvider::TellSystem() {
  Reading reading = UnitNamed("systemd");
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
