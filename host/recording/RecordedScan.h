#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/machine/Request.h"

/// What a recording holds. Moments are milliseconds since the recording began.
namespace emstatus::host {

/// What was there before the first scan.
struct RecordingHeader {
  /// Of the program that recorded.
  std::string version;
  /// Milliseconds since 1970, UTC.
  std::int64_t began = 0;
  std::vector<std::uint32_t> extensionCabinets;
  /// The variables that the configuration refers to; nothing for one that was not set.
  std::map<std::string, std::optional<std::string>> environment;
  /// The text of EM_STATUS.ini.
  std::string configuration;
  /// That of EM_STATUS_simu.ini, when there was one.
  std::optional<std::string> simulation;

  friend bool operator==(const RecordingHeader&, const RecordingHeader&) = default;
};

/// An answer that is another than the one before to the same request.
struct RecordedAnswer {
  Request request;
  /// Tells equal requests of one scan apart, from 0.
  std::uint32_t occurrence = 0;
  Answer answer;
  std::int64_t moment = 0;
  /// 0 when it was there at once.
  std::int64_t took = 0;
};

struct RecordedEvent {
  Request event;
  std::int64_t moment = 0;
};

/// An object of the machine whose reading is another than before.
struct RecordedObject {
  ObjectAddress address;
  /// The members of ObjectJson() that are new or other, null for those that are gone. Age is that at this
  /// moment. Null: there is no such object any more.
  nlohmann::json change;
};

/// The simulation file as the scan found it, when that was another than before.
struct RecordedSimulation {
  /// Nothing: there was no file.
  std::optional<std::string> text;
};

/// A scan, with all that has changed since the end of the one before.
struct RecordedScan {
  /// From 1.
  std::uint64_t number = 0;
  std::int64_t begin = 0;
  std::int64_t took = 0;
  std::uint32_t led = 0;
  std::uint32_t systemStatus = 0;
  /// How many requests the module has made.
  std::uint64_t asked = 0;

  std::vector<RecordedAnswer> answers;
  std::vector<RecordedEvent> events;
  std::vector<std::int64_t> wakeUps;
  std::optional<RecordedSimulation> simulation;
  std::vector<RecordedObject> objects;
  /// The module's tree, when it is another than before.
  std::optional<nlohmann::ordered_json> tree;
};

}  // namespace emstatus::host
