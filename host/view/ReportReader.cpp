#include "host/view/ReportReader.h"

#include <cmath>
#include <limits>
#include <map>
#include <utility>

#include "host/machine/JsonNode.h"
#include "host/machine/Numbering.h"
#include "host/machine/TimeText.h"

namespace emstatus::host {
namespace {

constexpr std::uint32_t kReportVersion = 1;
constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();
constexpr double kLongestSeconds = 1e12;
constexpr int kDeepestNode = 64;

std::string TextOr(const JsonNode& json, const char* name) {
  const auto member = json.Find(name);
  return member ? member->Text() : std::string();
}

bool IsTrue(const JsonNode& json, const char* name) {
  const auto member = json.Find(name);
  return member && member->Boolean();
}

std::uint32_t WholeAt(const JsonNode& json, const char* name) {
  return json.At(name).Whole(0, kLargest);
}

std::optional<double> NumberAt(const JsonNode& json, const char* name) {
  const auto member = json.Find(name);
  return member ? std::optional(member->Number()) : std::nullopt;
}

std::chrono::milliseconds SecondsAt(const JsonNode& json, const char* name) {
  const JsonNode member = json.At(name);
  const double seconds = member.Number();
  if (!(seconds >= 0 && seconds < kLongestSeconds)) {
    member.Fail("seconds");
  }
  return std::chrono::milliseconds(std::llround(seconds * 1000.0));
}

std::chrono::system_clock::time_point MomentOf(const JsonNode& member) {
  const auto moment = ReadUtc(member.Text());
  if (!moment) {
    member.Fail("a time like 2026-03-01T09:15:02.123Z");
  }
  return *moment;
}

std::optional<WallTime> WallTimeAt(const JsonNode& json, const char* name) {
  const auto member = json.Find(name);
  return member && !member->Value().is_null()
             ? std::optional(std::chrono::floor<std::chrono::seconds>(MomentOf(*member)))
             : std::nullopt;
}

/// The value of which the word at `name` tells, by one of the numbering's look-ups.
template <typename LookUp>
auto WordAt(const JsonNode& json, const char* name, LookUp lookUp, const char* expected) {
  const JsonNode member = json.At(name);
  const auto found = lookUp(member.Text());
  if (!found) {
    member.Fail(expected);
  }
  return *found;
}

Measurement ReadMeasurement(const JsonNode& json) {
  Measurement measurement;
  measurement.value = json.At("Value").Number();
  measurement.unit = WordAt(
      json, "Unit", [](const std::string& symbol) { return FindUnit(symbol); }, "a unit");
  if (const auto limits = json.Find("Limits")) {
    measurement.limits = {NumberAt(*limits, "LowerCritical"), NumberAt(*limits, "LowerWarning"),
                          NumberAt(*limits, "UpperWarning"), NumberAt(*limits, "UpperCritical")};
  }
  return measurement;
}

ObjectView ReadObject(const JsonNode& json) {
  ObjectView object;
  Reading& reading = object.reading;
  reading.objectClass =
      WordAt(
          json, "Class", [](const std::string& word) { return FindClass(word); }, "a class of objects")
          .objectClass;
  object.address = {reading.objectClass, WholeAt(json, "Index"), WholeAt(json, "Cabinet")};
  object.age = SecondsAt(json, "AgeSeconds");
  reading.id = json.At("Id").Text();
  reading.name = json.At("Name").Text();
  reading.quality = WordAt(
      json, "Quality", [](const std::string& word) { return FindQuality(word); }, "a quality");
  if (reading.quality == Quality::Good) {
    reading.condition = WordAt(
        json, "Condition", [](const std::string& word) { return FindCondition(word); }, "a condition");
  }
  if (json.Find("Value")) {
    reading.measurement = ReadMeasurement(json);
  }
  reading.customerServiceable = IsTrue(json, "CustomerServiceable");
  reading.reason = TextOr(json, "Reason");
  reading.advice = TextOr(json, "Advice");
  if (const auto group = json.Find("Redundancy")) {
    reading.redundancy = {group->At("Group").Text(), WholeAt(*group, "Members"), WholeAt(*group, "Needed"),
                          WholeAt(*group, "Present")};
  }
  return object;
}

void ReadKnowledge(const JsonNode& json, StatusNode& node) {
  if (const auto coverage = json.Find("Coverage")) {
    node.coverage = {WholeAt(*coverage, "Read"), WholeAt(*coverage, "Total"),
                     SecondsAt(*coverage, "OldestSeconds")};
  }
  node.since = WallTimeAt(json, "Since");
  if (const auto margin = json.Find("Margin")) {
    const JsonNode failures = margin->At("Failures");
    node.margin = {failures.Value().is_null() ? std::nullopt : std::optional(failures.Whole(0, kLargest)),
                   margin->At("Group").Text(), WholeAt(*margin, "Members"), WholeAt(*margin, "Needed"),
                   WholeAt(*margin, "Present")};
  }
  if (const auto rule = json.Find("Rule")) {
    node.rule = {rule->At("File").Text(), WholeAt(*rule, "Line"), rule->At("Section").Text(),
                 rule->At("Key").Text()};
  }
}

StatusNode ReadReportNode(const JsonNode& json, int depth) {
  if (depth > kDeepestNode) {
    json.Fail("a tree that is less deep");
  }
  StatusNode node;
  node.id = json.At("Id").Text();
  node.designation = json.At("Desig").Text();
  node.name = TextOr(json, "Name");
  node.section = TextOr(json, "Section");
  node.status = WholeAt(json, "Status");
  node.cssStatus = WholeAt(json, "CssStatus");
  node.nonCssStatus = WholeAt(json, "NoCssStatus");
  node.isCss = WholeAt(json, "IsCss") != 0;
  node.simulated = IsTrue(json, "Simulated");
  if (json.Find("ObjStatus")) {
    node.objectStatus = WholeAt(json, "ObjStatus");
  }
  node.associationKey = TextOr(json, "Assoc");
  ReadKnowledge(json, node);
  if (const auto object = json.Find("Object")) {
    node.object = ReadObject(*object);
  }
  if (const auto children = json.Find("Children")) {
    for (const JsonNode& child : children->Elements()) {
      node.children.push_back(ReadReportNode(child, depth + 1));
    }
  }
  return node;
}

SimulatedPart ReadPart(const JsonNode& json) {
  constexpr std::uint32_t kLargestStatus = 255;
  SimulatedPart part;
  if (const auto state = json.Find("ObjStatus")) {
    // A file written by hand may hold a negative one.
    part.objectStatus = std::int32_t(state->Number());
  } else {
    part.mappedStatus = std::uint8_t(json.At("Status").Whole(0, kLargestStatus));
  }
  if (const auto isCss = json.Find("IsCss")) {
    part.isCss = std::int32_t(isCss->Whole(0, 1));
  }
  return part;
}

SimulationState ReadSimulationState(const JsonNode& json) {
  SimulationState simulation;
  simulation.until = WallTimeAt(json, "Until");
  simulation.byHand = IsTrue(json, "ByHand");
  for (const JsonNode& part : json.At("Parts").Elements()) {
    const std::string name = part.At("Name").Text();
    simulation.parts[name] = ReadPart(part);
    if (!IsTrue(part, "Present")) {
      simulation.absent.insert(name);
    }
    if (IsTrue(part, "FromBefore")) {
      simulation.kept.insert(name);
    }
  }
  return simulation;
}

}  // namespace

ObjectView ReadObjectJson(const nlohmann::json& json) {
  const std::string source = "the object";
  return ReadObject(JsonNode(json, source));
}

Report ReadReport(const nlohmann::json& json) {
  const std::string source = "the report";
  const JsonNode document(json, source);
  const JsonNode version = document.At("Version");
  if (version.Whole(0, kLargest) != kReportVersion) {
    version.Fail("version 1");
  }
  Report report;
  report.time = MomentOf(document.At("Time"));
  report.begun = WallTimeAt(document, "Begun");
  report.systemStatus = WholeAt(document, "SystemStatus");
  report.led = WholeAt(document, "Led");
  if (const auto simulation = document.Find("Simulation")) {
    report.simulation = ReadSimulationState(*simulation);
  }
  report.root = ReadReportNode(document.At("Tree"), 0);
  return report;
}

namespace {

void ReadWords(const JsonNode& node, std::map<std::uint32_t, std::string>& names) {
  if (node.Find("StatusName")) {
    names[WholeAt(node, "Status")] = node.At("StatusName").Text();
  }
  if (const auto children = node.Find("Children")) {
    for (const JsonNode& child : children->Elements()) {
      ReadWords(child, names);
    }
  }
}

}  // namespace

StatusWords ReadStatusWords(const nlohmann::json& json) {
  const std::string source = "the report";
  const JsonNode document(json, source);
  std::map<std::uint32_t, std::string> names;
  ReadWords(document.At("Tree"), names);
  names[WholeAt(document, "SystemStatus")] = document.At("SystemStatusName").Text();
  return StatusWords(std::move(names));
}

}  // namespace emstatus::host
