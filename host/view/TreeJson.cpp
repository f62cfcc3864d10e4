#include "host/view/TreeJson.h"

#include "host/machine/Numbering.h"
#include "host/machine/TimeText.h"
#include "host/machine/Utf8.h"
#include "host/view/SimulationText.h"

namespace emstatus::host {
namespace {

using nlohmann::ordered_json;

ordered_json LimitsJson(const Limits& limits) {
  ordered_json json = ordered_json::object();
  const auto add = [&](const char* name, const std::optional<double>& limit) {
    if (limit) {
      json[name] = *limit;
    }
  };
  add("LowerCritical", limits.lowerCritical);
  add("LowerWarning", limits.lowerWarning);
  add("UpperWarning", limits.upperWarning);
  add("UpperCritical", limits.upperCritical);
  return json;
}

void AddMeasurement(ordered_json& json, const Measurement& measurement) {
  json["Value"] = measurement.value;
  json["Unit"] = SymbolOf(measurement.unit);
  if (measurement.limits != Limits{}) {
    json["Limits"] = LimitsJson(measurement.limits);
  }
}

void AddRedundancy(ordered_json& json, const Reading& reading) {
  const Redundancy& group = *reading.redundancy;
  json["Redundancy"] = {{"Group", CleanUtf8(group.group)},
                        {"State", WordOf(RedundancyStateOf(reading))},
                        {"Members", group.members},
                        {"Needed", group.needed},
                        {"Present", group.present}};
}

double Seconds(std::chrono::milliseconds duration) {
  return double(duration.count()) / 1000.0;
}

ordered_json MarginJson(const RedundancyMargin& margin) {
  return {{"Failures", margin.failures ? ordered_json(*margin.failures) : ordered_json(nullptr)},
          {"Group", CleanUtf8(margin.group)},
          {"Members", margin.members},
          {"Needed", margin.needed},
          {"Present", margin.present}};
}

/// What emhost knows of the node beside the module's own members.
void AddKnowledge(ordered_json& json, const StatusNode& node) {
  const Coverage& coverage = node.coverage;
  json["Coverage"] = {
      {"Read", coverage.read}, {"Total", coverage.total}, {"OldestSeconds", Seconds(coverage.oldest)}};
  if (node.since) {
    json["Since"] = UtcText(*node.since);
  }
  if (node.margin) {
    json["Margin"] = MarginJson(*node.margin);
  }
  if (node.rule) {
    json["Rule"] = {{"File", CleanUtf8(node.rule->file)},
                    {"Line", node.rule->line},
                    {"Section", CleanUtf8(node.rule->section)},
                    {"Key", CleanUtf8(node.rule->key)}};
  }
  if (IsStale(node)) {
    json["Stale"] = true;
  }
}

ordered_json NodeJson(const StatusNode& node, const StatusWords& words) {
  ordered_json json = NodeMembersJson(node, words);
  for (const StatusNode& child : node.children) {
    json["Children"].push_back(NodeJson(child, words));
  }
  return json;
}

}  // namespace

ordered_json NodeMembersJson(const StatusNode& node, const StatusWords& words) {
  ordered_json json;
  json["Id"] = node.id;
  json["Desig"] = node.designation;
  json["Name"] = CleanUtf8(node.name);
  json["Section"] = CleanUtf8(node.section);
  json["Status"] = node.status;
  json["StatusName"] = words.Of(node.status);
  if (node.simulated) {
    json["Simulated"] = true;
  }
  json["CssStatus"] = node.cssStatus;
  json["NoCssStatus"] = node.nonCssStatus;
  json["IsCss"] = node.isCss ? 1 : 0;
  if (node.objectStatus) {
    json["ObjStatus"] = *node.objectStatus;
  }
  if (!node.associationKey.empty()) {
    json["Assoc"] = node.associationKey;
  }
  AddKnowledge(json, node);
  if (node.object) {
    json["Object"] = ObjectJson(*node.object);
  }
  return json;
}

ordered_json ObjectJson(const ObjectView& object) {
  const Reading& reading = object.reading;
  ordered_json json;
  json["Class"] = RowOf(object.address.objectClass).word;
  json["Index"] = object.address.index;
  json["Cabinet"] = object.address.cabinet;
  json["Id"] = CleanUtf8(reading.id);
  json["Name"] = CleanUtf8(reading.name);
  json["Quality"] = WordOf(reading.quality);
  if (reading.quality == Quality::Good) {
    json["Condition"] = WordOf(reading.condition);
    if (reading.measurement) {
      AddMeasurement(json, *reading.measurement);
    }
  }
  json["AgeSeconds"] = Seconds(object.age);
  json["CustomerServiceable"] = reading.customerServiceable;
  if (!reading.reason.empty()) {
    json["Reason"] = CleanUtf8(reading.reason);
  }
  if (!reading.advice.empty()) {
    json["Advice"] = CleanUtf8(reading.advice);
  }
  if (reading.redundancy) {
    AddRedundancy(json, reading);
  }
  return json;
}

ordered_json TreeJson(const Report& report, const StatusWords& words) {
  ordered_json json;
  json["Version"] = 1;
  json["Time"] = UtcText(report.time);
  if (report.begun) {
    json["Begun"] = UtcText(*report.begun);
  }
  json["SystemStatus"] = report.systemStatus;
  json["SystemStatusName"] = words.Of(report.systemStatus);
  json["Led"] = report.led;
  if (report.simulation.InForce()) {
    json["Simulation"] = SimulationJson(report.simulation, words);
  }
  json["Tree"] = NodeJson(report.root, words);
  return json;
}

}  // namespace emstatus::host
