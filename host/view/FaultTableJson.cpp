#include <utility>

#include "host/machine/Numbering.h"
#include "host/view/FaultTable.h"

namespace emstatus::host {
namespace {

using nlohmann::ordered_json;

void AddFaultStatus(ordered_json& json, const std::string& name, std::uint32_t status,
                    const StatusWords& words) {
  json[name] = status;
  json[name + "Name"] = words.Of(status);
}

ordered_json FaultRowJson(const FaultRow& row, const StatusWords& words) {
  ordered_json json;
  json["Subsystem"] = row.place.subsystem;
  json["Component"] = row.place.component;
  json["Section"] = row.place.section;
  json["Part"] = row.place.part;
  json["Class"] = RowOf(row.place.address.objectClass).word;
  json["Index"] = row.place.address.index;
  json["Cabinet"] = row.place.address.cabinet;
  for (const Fault fault : row.faults) {
    json["Faults"].push_back(WordOf(fault));
  }
  const FaultEffect& effect = row.effect;
  AddFaultStatus(json, "PartStatus", effect.part, words);
  AddFaultStatus(json, "ComponentStatus", effect.component, words);
  AddFaultStatus(json, "SubsystemStatus", effect.subsystem, words);
  AddFaultStatus(json, "SystemStatus", effect.system, words);
  json["Led"] = effect.led;
  json["Events"] = {{"InstanceStatus", effect.instanceEvents},
                    {"SystemStatus", effect.systemEvents},
                    {"Led", effect.ledChanges}};
  json["ExitCode"] = ExitCodeOf(effect.system);
  json["AlsoChanged"] = effect.others;
  json["Shows"] = effect.shows;
  json["Scans"] = effect.scans;
  json["Ends"] = effect.ends;
  json["Wrong"] = row.IsWrong();
  return json;
}

}  // namespace

ordered_json FaultTableJson(const FaultTable& table, const StatusWords& words) {
  ordered_json json;
  json["Version"] = 1;
  AddFaultStatus(json["Good"], "SystemStatus", table.system, words);
  json["Good"]["Led"] = table.led;
  json["NeverGood"] = table.neverGood;
  json["NotForced"] = table.notForced;
  json["NotAsked"] = table.notAsked;
  json["Rows"] = ordered_json::array();
  for (const FaultRow& row : table.rows) {
    json["Rows"].push_back(FaultRowJson(row, words));
  }
  return json;
}

}  // namespace emstatus::host
