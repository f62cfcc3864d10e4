#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>

#include <nlohmann/json.hpp>

#include "host/machine/Machine.h"
#include "host/module/NoticeQueue.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

/// A status that is another than before: of an instance, of the system, or of the error LED.
struct StatusChange {
  enum class What { Instance, System, Led };

  What what = What::System;
  std::chrono::system_clock::time_point time;
  std::uint32_t before = 0;
  std::uint32_t now = 0;
  /// The instance is simulated; of system and LED: some part is.
  bool simulated = false;

  // Of an instance
  std::uint32_t subsystem = 0;
  std::uint32_t component = 0;
  std::uint32_t index = 0;
  std::uint32_t cabinet = 0;
  std::string subsystemName;
  std::string componentName;
  std::string name;
  std::optional<ObjectView> object;
};

/// Remembers the last status of everything, so that an event, which tells only the new one, becomes a change.
/// [main thread]
class StatusHistory {
 public:
  /// Nothing for an event that is no status event, and for one that repeats what is known.
  std::optional<StatusChange> Take(const Notice& notice);

 private:
  std::map<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>, std::uint32_t> instances_;
  std::uint32_t system_ = 0;
  std::uint32_t led_ = 0;
};

/// One line for people, without a line end. [any thread]
std::string ChangeText(const StatusChange& change, const StatusWords& words, bool colours);

/// The same for programs. [any thread]
nlohmann::ordered_json ChangeJson(const StatusChange& change, const StatusWords& words);

}  // namespace emstatus::host
