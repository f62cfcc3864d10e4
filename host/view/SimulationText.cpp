#include "host/view/SimulationText.h"

#include "host/machine/TimeText.h"
#include "host/machine/Utf8.h"

namespace emstatus::host {
namespace {

using nlohmann::ordered_json;

std::string PartText(const std::string& name, const SimulatedPart& part, const SimulationState& simulation,
                     const StatusWords& words) {
  std::string text = CleanUtf8(name) + " ";
  text += part.objectStatus == SimulatedPart::kNotSimulated
              ? words.Of(part.mappedStatus)
              : "object status " + std::to_string(part.objectStatus);
  if (part.isCss != SimulatedPart::kNotSimulated) {
    text += part.isCss == 0 ? " (not CSS)" : " (CSS)";
  }
  if (simulation.absent.contains(name)) {
    text += " (not in the tree)";
  }
  return simulation.kept.contains(name) ? text + " (still, from before)" : text;
}

ordered_json PartJson(const std::string& name, const SimulatedPart& part, const SimulationState& simulation,
                      const StatusWords& words) {
  ordered_json json;
  json["Name"] = CleanUtf8(name);
  if (part.objectStatus == SimulatedPart::kNotSimulated) {
    json["Status"] = part.mappedStatus;
    json["StatusName"] = words.Of(part.mappedStatus);
  } else {
    json["ObjStatus"] = part.objectStatus;
  }
  if (part.isCss != SimulatedPart::kNotSimulated) {
    json["IsCss"] = part.isCss == 0 ? 0 : 1;
  }
  json["Present"] = !simulation.absent.contains(name);
  json["FromBefore"] = simulation.kept.contains(name);
  return json;
}

}  // namespace

std::string PartsText(const SimulationState& simulation, const StatusWords& words) {
  std::string text;
  for (const auto& [name, part] : simulation.parts) {
    text += (text.empty() ? "" : ", ") + PartText(name, part, simulation, words);
  }
  return text;
}

std::string EndText(const SimulationState& simulation) {
  if (simulation.until) {
    return "until " + LocalText(*simulation.until);
  }
  return simulation.byHand ? "without end, by a file written by hand" : "for ever";
}

std::string BannerText(const SimulationState& simulation, const StatusWords& words) {
  return "Simulated " + EndText(simulation) + ": " + PartsText(simulation, words);
}

ordered_json SimulationJson(const SimulationState& simulation, const StatusWords& words) {
  if (!simulation.InForce()) {
    return nullptr;
  }
  ordered_json json;
  json["Until"] = simulation.until ? ordered_json(UtcText(*simulation.until)) : ordered_json(nullptr);
  json["ByHand"] = simulation.byHand;
  for (const auto& [name, part] : simulation.parts) {
    json["Parts"].push_back(PartJson(name, part, simulation, words));
  }
  return json;
}

std::string SimulationEventText(std::chrono::system_clock::time_point time, const SimulationState& simulation,
                                const StatusWords& words) {
  return LocalText(time) + "  " +
         (simulation.InForce() ? BannerText(simulation, words) : "Nothing is simulated any more");
}

ordered_json SimulationEventJson(std::chrono::system_clock::time_point time,
                                 const SimulationState& simulation, const StatusWords& words) {
  return {
      {"Time", UtcText(time)}, {"Event", "Simulation"}, {"Simulation", SimulationJson(simulation, words)}};
}

}  // namespace emstatus::host
