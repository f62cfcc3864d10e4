#include "host/machine/ScenarioFile.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <set>
#include <tuple>

#include "host/machine/JsonNode.h"
#include "host/machine/ReadingText.h"

namespace emstatus::host {
namespace {

constexpr std::uint32_t kAny = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kLargestCabinet = 0xFFFF;
constexpr double kLongestSeconds = 1e9;
constexpr std::size_t kLargestScenario = 64U << 20;

std::uint64_t Milliseconds(const JsonNode& node) {
  const double seconds = node.Number();
  if (!(seconds >= 0 && seconds <= kLongestSeconds)) {
    node.Fail("a number of seconds from 0 on");
  }
  return std::uint64_t(std::llround(seconds * 1000));
}

Limits ReadLimits(const JsonNode& node) {
  node.ExpectMembers({"lowerCritical", "lowerWarning", "upperWarning", "upperCritical"});
  const auto limit = [&](const char* name) -> std::optional<double> {
    const auto member = node.Find(name);
    return member ? std::optional(member->Number()) : std::nullopt;
  };
  return {limit("lowerCritical"), limit("lowerWarning"), limit("upperWarning"), limit("upperCritical")};
}

Redundancy ReadRedundancy(const JsonNode& node) {
  node.ExpectMembers({"group", "members", "needed"});
  Redundancy redundancy;
  redundancy.group = node.At("group").Text();
  redundancy.members = node.At("members").Whole(1, kAny);
  redundancy.needed = node.At("needed").Whole(0, redundancy.members);
  return redundancy;
}

template <typename Value>
Value ReadWord(const JsonNode& node, std::optional<Value> (*find)(std::string_view), const char* expected) {
  const auto value = find(node.Text());
  if (!value) {
    node.Fail(expected);
  }
  return *value;
}

ScenarioAnswer ReadAnswer(const JsonNode& node) {
  node.ExpectMembers({"to", "delaySeconds", "status", "data"});
  ScenarioAnswer answer;
  if (const auto to = node.Find("to")) {
    answer.question =
        ReadWord<Question>(*to, FindQuestion, "the word of a question (state, count, name, ...)");
  }
  if (const auto delay = node.Find("delaySeconds")) {
    answer.delay = std::chrono::milliseconds(Milliseconds(*delay));
  }
  if (const auto status = node.Find("status")) {
    answer.status = status->Whole(0, kAny);
  }
  if (const auto data = node.Find("data")) {
    answer.data = data->Value();
  }
  return answer;
}

/// The value with its unit and limits, which stand at the object, and what follows from them.
void ReadMeasurement(const JsonNode& object, const JsonNode& step, Reading& reading) {
  const auto value = step.Find("value");
  if (!value) {
    return;
  }
  Measurement measurement;
  measurement.value = value->Number();
  if (const auto unit = object.Find("unit")) {
    measurement.unit = ReadWord<Unit>(*unit, FindUnit, "a unit (°C, RPM, V, A, W, %, B, bit/s, s, count)");
  }
  if (const auto limits = object.Find("limits")) {
    measurement.limits = ReadLimits(*limits);
  }
  reading.condition = ConditionByLimits(measurement);
  reading.reason = LimitBreach(measurement);
  reading.measurement = std::move(measurement);
}

Reading ReadReading(const JsonNode& object, const JsonNode& step, const Reading& common) {
  Reading reading = common;
  ReadMeasurement(object, step, reading);
  if (const auto condition = step.Find("condition")) {
    reading.condition = ReadWord<Condition>(*condition, FindCondition, "good, warning or critical");
  }
  if (const auto quality = step.Find("quality")) {
    reading.quality = ReadWord<Quality>(*quality, FindQuality,
                                        "good, late, \"sensor fault\", implausible, inactive or lost");
  }
  if (const auto reason = step.Find("reason")) {
    reading.reason = reason->Text();
  }
  if (const auto advice = step.Find("advice")) {
    reading.advice = advice->Text();
  }
  if (reading.quality != Quality::Good) {
    reading.measurement.reset();
  }
  const bool unwell = reading.quality != Quality::Good || reading.condition != Condition::Good;
  if (unwell && reading.reason.empty()) {
    step.Fail("a \"reason\" with a condition or quality that is not good");
  }
  return reading;
}

ScenarioStep ReadStep(const JsonNode& object, const JsonNode& node, const Reading& common) {
  ScenarioStep step;
  step.reading = ReadReading(object, node, common);
  if (const auto latched = node.Find("latched")) {
    step.latched = latched->Boolean();
  }
  if (const auto answers = node.Find("answers")) {
    for (const JsonNode& answer : answers->Elements()) {
      step.answers.push_back(ReadAnswer(answer));
    }
  }
  return step;
}

Reading ReadCommon(const JsonNode& node) {
  Reading reading;
  const ClassRow* row = FindClass(std::string_view(node.At("class").Text()));
  if (row == nullptr) {
    node.At("class").Fail("the word of a class (temperature, fan, disk, ...)");
  }
  reading.objectClass = row->objectClass;
  reading.name = node.At("name").Text();
  reading.id = node.Find("id") ? node.At("id").Text() : reading.name;
  reading.quality = Quality::Good;
  if (const auto cabinet = node.Find("cabinet")) {
    reading.cabinet = cabinet->Whole(0, kLargestCabinet);
  }
  if (const auto serviceable = node.Find("customerServiceable")) {
    reading.customerServiceable = serviceable->Boolean();
  }
  if (const auto redundancy = node.Find("redundancy")) {
    reading.redundancy = ReadRedundancy(*redundancy);
  }
  return reading;
}

/// Steps in their order; the first one is how the object is at the start.
std::vector<ScenarioStep> ReadStory(const JsonNode& object, const Reading& common, bool bySeconds) {
  const auto story = object.Find("story");
  if (!story) {
    return {ReadStep(object, object, common)};
  }
  std::vector<ScenarioStep> steps;
  for (const JsonNode& node : story->Elements()) {
    node.ExpectMembers({"at", "value", "condition", "quality", "reason", "advice", "latched", "answers"});
    ScenarioStep step = ReadStep(object, node, common);
    const JsonNode at = node.At("at");
    step.at = bySeconds ? Milliseconds(at) : at.Whole(1, kAny);
    if (steps.empty() && step.at != (bySeconds ? 0 : 1)) {
      at.Fail(bySeconds ? "0 in the first step" : "1 in the first step");
    }
    if (!steps.empty() && step.at <= steps.back().at) {
      at.Fail("a later moment than that of the step before");
    }
    steps.push_back(std::move(step));
  }
  if (steps.empty()) {
    story->Fail("at least one step");
  }
  return steps;
}

ScenarioObject ReadObject(const JsonNode& node, bool bySeconds) {
  if (node.Value().is_object() && node.Value().contains("story")) {
    node.ExpectMembers({"class", "id", "name", "cabinet", "unit", "limits", "customerServiceable",
                        "redundancy", "source", "story"});
  } else {
    node.ExpectMembers({"class", "id", "name", "cabinet", "unit", "limits", "customerServiceable",
                        "redundancy", "source", "value", "condition", "quality", "reason", "advice",
                        "latched", "answers", "story"});
  }
  ScenarioObject object;
  if (const auto source = node.Find("source")) {
    object.source = source->Text();
  }
  object.story = ReadStory(node, ReadCommon(node), bySeconds);
  return object;
}

void ReadObjects(const JsonNode& node, Scenario& scenario) {
  std::set<std::tuple<ObjectClass, std::uint32_t, std::string>> seen;
  for (const JsonNode& element : node.Elements()) {
    ScenarioObject object = ReadObject(element, scenario.bySeconds);
    const Reading& reading = object.story.front().reading;
    if (!seen.emplace(reading.objectClass, reading.cabinet.value_or(0), reading.id).second) {
      element.Fail("an id (or name) that no other object of its class and cabinet has");
    }
    scenario.objects.push_back(std::move(object));
  }
}

void ReadTiming(const JsonNode& root, Scenario& scenario) {
  if (const auto time = root.Find("time")) {
    const std::string word = time->Text();
    if (word != "scans" && word != "seconds") {
      time->Fail("\"scans\" or \"seconds\"");
    }
    scenario.bySeconds = word == "seconds";
  }
  if (const auto repeat = root.Find("repeatAfter")) {
    scenario.repeatAfter = scenario.bySeconds ? Milliseconds(*repeat) : repeat->Whole(1, kAny);
  }
  if (const auto rescan = root.Find("rescanSeconds")) {
    scenario.rescan = std::chrono::milliseconds(Milliseconds(*rescan));
  }
}

std::string Place(std::string_view text, std::size_t byte) {
  std::size_t line = 1;
  std::size_t column = 1;
  for (std::size_t index = 0; index + 1 < byte && index < text.size(); ++index) {
    const bool newLine = text[index] == '\n';
    line += newLine ? 1 : 0;
    column = newLine ? 1 : column + 1;
  }
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

}  // namespace

Scenario ParseScenario(std::string_view text, const std::string& file) {
  nlohmann::json document;
  try {
    document = nlohmann::json::parse(text);
  } catch (const nlohmann::json::parse_error& error) {
    throw ScenarioError(file + ": " + Place(text, error.byte) + ": expected JSON (" + error.what() + ")");
  } catch (const nlohmann::json::exception& error) {
    throw ScenarioError(file + ": expected JSON (" + error.what() + ")");
  }
  const JsonNode root(document, file);
  root.ExpectMembers(
      {"format", "name", "time", "repeatAfter", "rescanSeconds", "extensionCabinets", "objects"});
  root.At("format").Whole(1, 1);
  Scenario scenario;
  scenario.name = root.At("name").Text();
  ReadTiming(root, scenario);
  if (const auto cabinets = root.Find("extensionCabinets")) {
    for (const JsonNode& cabinet : cabinets->Elements()) {
      scenario.extensionCabinets.push_back(cabinet.Whole(1, kLargestCabinet));
    }
  }
  ReadObjects(root.At("objects"), scenario);
  return scenario;
}

Scenario ReadScenario(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    throw ScenarioError(path + ": cannot be opened: " + std::strerror(errno));
  }
  std::string text;
  std::array<char, 65536> piece{};
  while (stream.read(piece.data(), piece.size()), stream.gcount() > 0) {
    text.append(piece.data(), std::size_t(stream.gcount()));
    if (text.size() > kLargestScenario) {
      throw ScenarioError(path + ": this is no scenario: it has more than " +
                          std::to_string(kLargestScenario >> 20) + " MiB");
    }
  }
  if (stream.bad()) {
    throw ScenarioError(path + ": cannot be read: " + std::strerror(errno));
  }
  return ParseScenario(text, path);
}

}  // namespace emstatus::host
