#include "host/view/StatusChange.h"

#include <utility>

#include "host/machine/TimeText.h"
#include "host/machine/Utf8.h"
#include "host/module/CommandReader.h"
#include "host/module/HostCodes.h"
#include "host/view/Colours.h"
#include "host/view/ObjectText.h"
#include "host/view/TreeJson.h"

namespace emstatus::host {
namespace {

std::string StateWord(const StatusChange& change, std::uint32_t value, const StatusWords& words) {
  return change.what == StatusChange::What::Led ? LedText(value, words.Of(value & ~kLedCustomerServiceable))
                                                : words.Of(value);
}

std::string Subject(const StatusChange& change) {
  switch (change.what) {
    case StatusChange::What::System:
      return "System";
    case StatusChange::What::Led:
      return "Error LED";
    case StatusChange::What::Instance:
      break;
  }
  const std::string cabinet = change.cabinet == 0 ? "" : " (cabinet " + std::to_string(change.cabinet) + ")";
  return change.componentName + ", " + change.name + cabinet;
}

}  // namespace

std::optional<StatusChange> StatusHistory::Take(const Notice& notice) {
  StatusChange change;
  change.time = notice.time;
  if (notice.kind == Notice::Kind::ScanEnd) {
    change.what = StatusChange::What::Led;
    change.now = notice.led;
    change.before = std::exchange(led_, change.now);
    return change.before == change.now ? std::nullopt : std::optional(std::move(change));
  }
  const auto status = NumberOf(notice.event.data);
  if (notice.kind != Notice::Kind::Event || !status) {
    return std::nullopt;
  }
  const Request& event = notice.event;
  change.now = *status & 0xFF;
  if (event.code == std::uint32_t(TreeCode::SystemStatus)) {
    change.before = std::exchange(system_, change.now);
  } else if (event.code == std::uint32_t(TreeCode::InstanceStatus)) {
    change.what = StatusChange::What::Instance;
    change.subsystem = event.extension >> 16;
    change.component = event.extension & 0xFFFF;
    change.index = event.object;
    change.cabinet = event.cabinet;
    change.before = std::exchange(instances_[{event.extension, event.object, event.cabinet}], change.now);
  } else {
    return std::nullopt;
  }
  return change.before == change.now ? std::nullopt : std::optional(std::move(change));
}

std::string ChangeText(const StatusChange& change, const StatusWords& words, bool colours) {
  const bool led = change.what == StatusChange::What::Led;
  const std::uint32_t colour = led ? change.now & ~kLedCustomerServiceable : change.now;
  std::string text = LocalText(change.time) + "  " + Subject(change) + ": " +
                     StateWord(change, change.before, words) + " -> " +
                     InColour(StateWord(change, change.now, words), colour, colours);
  if (change.simulated) {
    text += change.what == StatusChange::What::Instance ? " (simulated)" : " (parts are simulated)";
  }
  const std::string remark = change.object ? CleanLine(RemarkOn(*change.object)) : std::string();
  return remark.empty() ? text : text + "  (" + remark + ")";
}

nlohmann::ordered_json ChangeJson(const StatusChange& change, const StatusWords& words) {
  nlohmann::ordered_json json;
  json["Time"] = UtcText(change.time);
  switch (change.what) {
    case StatusChange::What::Instance:
      json["Event"] = "InstanceStatus";
      json["Subsystem"] = change.subsystemName;
      json["Component"] = change.componentName;
      json["Name"] = change.name;
      json["Index"] = change.index;
      json["Cabinet"] = change.cabinet;
      break;
    case StatusChange::What::System:
      json["Event"] = "SystemStatus";
      break;
    case StatusChange::What::Led:
      json["Event"] = "Led";
      break;
  }
  json["Old"] = change.before;
  json["OldName"] = StateWord(change, change.before, words);
  json["New"] = change.now;
  json["NewName"] = StateWord(change, change.now, words);
  if (change.simulated) {
    json[change.what == StatusChange::What::Instance ? "Simulated" : "SimulatedParts"] = true;
  }
  if (change.object) {
    json["Object"] = ObjectJson(*change.object);
  }
  return json;
}

}  // namespace emstatus::host
