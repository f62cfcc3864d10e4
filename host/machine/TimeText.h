#pragma once

#include <chrono>
#include <optional>
#include <string>

/// Moments as text. [any thread]
namespace emstatus::host {

/// Local time of day with milliseconds: "10:15:02.123".
std::string ClockText(std::chrono::system_clock::time_point moment);

/// Local date and time: "2026-03-01 10:15:02".
std::string LocalText(std::chrono::system_clock::time_point moment);

/// UTC, for programs: "2026-03-01T09:15:02.123Z".
std::string UtcText(std::chrono::system_clock::time_point moment);

/// The moment of which UtcText makes this text; nothing for any other text.
std::optional<std::chrono::system_clock::time_point> ReadUtc(const std::string& text);

}  // namespace emstatus::host
