#include "host/recording/RecordingLines.h"

#include <chrono>
#include <stdexcept>
#include <string_view>

#include "host/machine/JsonNode.h"
#include "host/machine/Numbering.h"
#include "host/machine/TimeText.h"
#include "host/recording/RecordedText.h"
#include "host/recording/RequestKey.h"

namespace emstatus::host {
namespace {

using nlohmann::ordered_json;

constexpr std::uint32_t kRecordingVersion = 1;
constexpr std::uint32_t kAnyNumber = 0xFFFFFFFF;
constexpr double kLatestMoment = 1e15;
/// Of the trees that the module can build, with room.
constexpr int kDeepestLine = 160;

std::string AsLine(const ordered_json& line) {
  return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

Request ReadRequestPlace(const JsonNode& node) {
  const auto request = ReadPlace(node.Text());
  if (!request) {
    node.Fail("a request as OC-OI-OE-CA");
  }
  return *request;
}

std::int64_t ReadMoment(const JsonNode& node) {
  const double moment = node.Number();
  if (!(moment >= 0 && moment <= kLatestMoment)) {
    node.Fail("milliseconds");
  }
  return std::int64_t(moment);
}

std::optional<nlohmann::json> ReadData(const JsonNode& line, const char* name) {
  const auto data = line.Find(name);
  return data ? std::optional(OriginalValue(data->Value())) : std::nullopt;
}

std::string ReadOriginalText(const JsonNode& node) {
  const nlohmann::json original = OriginalValue(node.Value());
  if (!original.is_string()) {
    node.Fail("a text");
  }
  return original.get<std::string>();
}

std::optional<std::string> ReadTextOrNull(const JsonNode& node) {
  return node.Value().is_null() ? std::nullopt : std::optional(ReadOriginalText(node));
}

nlohmann::json TextOrNull(const std::optional<std::string>& text) {
  return text ? RecordedText(*text) : nlohmann::json(nullptr);
}

ordered_json AnswerLine(const RecordedAnswer& entry) {
  ordered_json line{{"ask", PlaceText(entry.request)}};
  if (entry.occurrence != 0) {
    line["again"] = entry.occurrence;
  }
  if (entry.request.data) {
    line["with"] = RecordedValue(*entry.request.data);
  }
  line["status"] = entry.answer.status;
  if (entry.answer.data) {
    line["data"] = RecordedValue(*entry.answer.data);
  }
  line["at"] = entry.moment;
  if (entry.took != 0) {
    line["took"] = entry.took;
  }
  return line;
}

RecordedAnswer ReadAnswerLine(const JsonNode& line) {
  RecordedAnswer entry;
  entry.request = ReadRequestPlace(line.At("ask"));
  entry.request.data = ReadData(line, "with");
  if (const auto again = line.Find("again")) {
    entry.occurrence = again->Whole(1, kAnyNumber);
  }
  entry.answer = {line.At("status").Whole(0, kAnyNumber), ReadData(line, "data")};
  entry.moment = ReadMoment(line.At("at"));
  if (const auto took = line.Find("took")) {
    entry.took = ReadMoment(*took);
  }
  return entry;
}

ordered_json EventLine(const RecordedEvent& entry) {
  ordered_json line{{"event", PlaceText(entry.event)}};
  if (entry.event.data) {
    line["data"] = RecordedValue(*entry.event.data);
  }
  line["at"] = entry.moment;
  return line;
}

RecordedEvent ReadEventLine(const JsonNode& line) {
  RecordedEvent entry{ReadRequestPlace(line.At("event")), ReadMoment(line.At("at"))};
  entry.event.data = ReadData(line, "data");
  return entry;
}

ordered_json ObjectLine(const RecordedObject& entry) {
  return {{"object", RowOf(entry.address.objectClass).word},
          {"index", entry.address.index},
          {"cabinet", entry.address.cabinet},
          {"is", entry.change}};
}

RecordedObject ReadObjectLine(const JsonNode& line) {
  const JsonNode word = line.At("object");
  const ClassRow* row = FindClass(word.Text());
  if (row == nullptr) {
    word.Fail("a class of objects");
  }
  const JsonNode change = line.At("is");
  if (!change.Value().is_object() && !change.Value().is_null()) {
    change.Fail("an object or null");
  }
  return {{row->objectClass, line.At("index").Whole(0, kAnyNumber), line.At("cabinet").Whole(0, kAnyNumber)},
          change.Value()};
}

ordered_json ScanLine(const RecordedScan& scan) {
  return {{"scan", scan.number},         {"at", scan.begin}, {"took", scan.took}, {"asked", scan.asked},
          {"status", scan.systemStatus}, {"led", scan.led}};
}

void ReadScanItself(const JsonNode& line, RecordedScan& scan) {
  scan.number = line.At("scan").Whole(1, kAnyNumber);
  scan.begin = ReadMoment(line.At("at"));
  scan.took = ReadMoment(line.At("took"));
  scan.asked = line.At("asked").Whole(0, kAnyNumber);
  scan.systemStatus = line.At("status").Whole(0, kAnyNumber);
  scan.led = line.At("led").Whole(0, 0xFF);
}

/// Throws what parsing throws, and for what is nested too deeply to be handled.
template <typename Json>
Json ParsedLine(const std::string& line) {
  return Json::parse(line, [](int depth, auto, const auto&) {
    if (depth > kDeepestLine) {
      throw std::runtime_error("it is nested too deeply");
    }
    return true;
  });
}

nlohmann::json ParsedOrThrow(const std::string& line, const std::string& place) {
  try {
    return ParsedLine<nlohmann::json>(line);
  } catch (const nlohmann::json::parse_error& error) {
    throw std::runtime_error(place + ": expected JSON, but byte " + std::to_string(error.byte) + " is wrong");
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(place + ": " + error.what());
  }
}

LineKind TakeLine(const JsonNode& line, const std::string& text, RecordedScan& scan) {
  if (line.Find("ask")) {
    scan.answers.push_back(ReadAnswerLine(line));
  } else if (line.Find("event")) {
    scan.events.push_back(ReadEventLine(line));
  } else if (line.Find("object")) {
    scan.objects.push_back(ReadObjectLine(line));
  } else if (const auto wakeUp = line.Find("wake")) {
    scan.wakeUps.push_back(ReadMoment(*wakeUp));
  } else if (const auto simulation = line.Find("simulation")) {
    scan.simulation = RecordedSimulation{ReadTextOrNull(*simulation)};
  } else if (const auto tree = line.Find("tree")) {
    if (!tree->Value().is_object()) {
      tree->Fail("an object");
    }
    // Again, in the order of its members.
    scan.tree = ParsedLine<ordered_json>(text)["tree"];
  } else if (line.Find("scan")) {
    ReadScanItself(line, scan);
    return LineKind::Scan;
  } else if (line.Find("end")) {
    return LineKind::End;
  } else {
    line.Fail("a line of a recording");
  }
  return LineKind::Entry;
}

}  // namespace

std::string HeaderLine(const RecordingHeader& header) {
  ordered_json environment = ordered_json::object();
  for (const auto& [name, value] : header.environment) {
    environment[name] = TextOrNull(value);
  }
  const std::chrono::system_clock::time_point began{std::chrono::milliseconds(header.began)};
  return AsLine({{"emhostRecording", kRecordingVersion},
                 {"version", header.version},
                 {"began", header.began},
                 {"beganText", UtcText(began)},
                 {"extensionCabinets", header.extensionCabinets},
                 {"environment", environment},
                 {"configuration", RecordedText(header.configuration)},
                 {"simulation", TextOrNull(header.simulation)}});
}

RecordingHeader ReadHeaderLine(const std::string& line, const std::string& place) {
  nlohmann::json document;
  try {
    document = ParsedLine<nlohmann::json>(line);
  } catch (const std::exception&) {
    // Whatever it is, told below.
  }
  if (!document.is_object() || !document.contains("emhostRecording")) {
    throw std::runtime_error(place + ": this is no recording of emhost record");
  }
  const JsonNode header(document, place);
  if (header.At("emhostRecording").Value() != kRecordingVersion) {
    throw std::runtime_error(place + ": a recording of version " + document["emhostRecording"].dump() +
                             "; this emhost reads version " + std::to_string(kRecordingVersion));
  }
  RecordingHeader read;
  read.version = header.At("version").Text();
  read.began = ReadMoment(header.At("began"));
  for (const JsonNode& cabinet : header.At("extensionCabinets").Elements()) {
    read.extensionCabinets.push_back(cabinet.Whole(1, 0xFFFF));
  }
  const JsonNode environment = header.At("environment");
  if (!environment.Value().is_object()) {
    environment.Fail("an object");
  }
  for (const auto& [name, value] : environment.Value().items()) {
    read.environment[name] = ReadTextOrNull(environment.At(name.c_str()));
  }
  read.configuration = ReadOriginalText(header.At("configuration"));
  read.simulation = ReadTextOrNull(header.At("simulation"));
  return read;
}

std::string ScanLines(const RecordedScan& scan) {
  std::string lines;
  for (const std::int64_t moment : scan.wakeUps) {
    lines += AsLine({{"wake", moment}});
  }
  if (scan.simulation) {
    lines += AsLine({{"simulation", TextOrNull(scan.simulation->text)}});
  }
  for (const RecordedAnswer& entry : scan.answers) {
    lines += AsLine(AnswerLine(entry));
  }
  for (const RecordedEvent& entry : scan.events) {
    lines += AsLine(EventLine(entry));
  }
  for (const RecordedObject& entry : scan.objects) {
    lines += AsLine(ObjectLine(entry));
  }
  if (scan.tree) {
    lines += AsLine({{"tree", *scan.tree}});
  }
  return lines + AsLine(ScanLine(scan));
}

std::string EndLine() {
  return AsLine({{"end", true}});
}

LineKind ReadScanLine(const std::string& line, const std::string& place, RecordedScan& scan) {
  const nlohmann::json document = ParsedOrThrow(line, place);
  const JsonNode node(document, place);
  if (!document.is_object()) {
    node.Fail("an object");
  }
  return TakeLine(node, line, scan);
}

}  // namespace emstatus::host
