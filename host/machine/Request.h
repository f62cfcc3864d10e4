#pragma once

#include <compare>
#include <cstdint>
#include <optional>

#include <nlohmann/json.hpp>

#include "host/machine/Numbering.h"

namespace emstatus::host {

/// A request of the module, copied out of its command: nothing in it belongs to the module.
struct Request {
  /// "OC"
  std::uint32_t code = 0;
  /// "OE"
  std::uint32_t extension = 0;
  /// "OI"
  std::uint32_t object = 0;
  /// "CA"
  std::uint32_t cabinet = 0;
  /// "DA"; raw bytes are {"RAW": [n, ...]}.
  std::optional<nlohmann::json> data;
};

/// What goes back into the command: "ST", and "DA" when there is any.
struct Answer {
  std::uint32_t status = std::uint32_t(AnswerStatus::Success);
  std::optional<nlohmann::json> data;

  static Answer Of(nlohmann::json data) { return {std::uint32_t(AnswerStatus::Success), std::move(data)}; }
  static Answer Refusal(AnswerStatus status) { return {std::uint32_t(status), std::nullopt}; }

  friend bool operator==(const Answer&, const Answer&) = default;
};

/// Where an object stands in the numbering.
struct ObjectAddress {
  ObjectClass objectClass = ObjectClass::HealthSource;
  /// Counts from ClassRow::firstIndex.
  std::uint32_t index = 0;
  std::uint32_t cabinet = 0;

  friend auto operator<=>(const ObjectAddress&, const ObjectAddress&) = default;
};

}  // namespace emstatus::host
