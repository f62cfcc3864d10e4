#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/machine/Request.h"

namespace emstatus::host {

/// An answer that is not as it should be.
struct ScenarioAnswer {
  /// The question so answered; absent: every question about an object.
  std::optional<Question> question;
  std::chrono::milliseconds delay{0};
  /// Absent: as usual.
  std::optional<std::uint32_t> status;
  /// Absent: as usual, or none when `status` is given.
  std::optional<nlohmann::json> data;
};

/// How an object is from one moment on.
struct ScenarioStep {
  /// The number of a scan, counting from 1, or milliseconds since the start.
  std::uint64_t at = 0;
  Reading reading;
  /// Stays until it is confirmed, even when the story has gone on.
  bool latched = false;
  std::vector<ScenarioAnswer> answers;
};

struct ScenarioObject {
  /// Objects of one source answer one after the other; empty: the object answers on its own.
  std::string source;
  /// Sorted by `at`, never empty.
  std::vector<ScenarioStep> story;
};

/// A machine that never was, and what happens to it.
struct Scenario {
  std::string name;
  std::vector<std::uint32_t> extensionCabinets;
  /// Whether the story counts milliseconds instead of scans.
  bool bySeconds = false;
  /// The story begins again after so many scans or milliseconds; 0: never.
  std::uint64_t repeatAfter = 0;
  /// How often the module is made to scan; 0: as often as it likes.
  std::chrono::milliseconds rescan{0};
  std::vector<ScenarioObject> objects;
};

/// "FILE: POINTER: expected EXPECTED, found FOUND"
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads a scenario (docs/HOST.md has the format) from text; `file` is its name in messages. Throws a
/// ScenarioError for the first thing that is wrong.
Scenario ParseScenario(std::string_view text, const std::string& file);

/// The same from a file.
Scenario ReadScenario(const std::string& path);

}  // namespace emstatus::host
