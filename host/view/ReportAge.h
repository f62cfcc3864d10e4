#pragma once

#include <chrono>
#include <string>

#include <nlohmann/json.hpp>

#include "host/view/Report.h"

/// A running emhost gives the report of its last scan, however long ago that was. [any thread]
namespace emstatus::host {

/// Lets the ages in a report as TreeJson writes it, which are those at its Time, grow until `now`. A report
/// of the future stays as it is.
void LetAge(nlohmann::ordered_json& report, std::chrono::system_clock::time_point now);

/// "Last scan:     2026-03-01 10:15:02, 18 s ago\n"; empty when it was a moment ago.
std::string LastScanText(const Report& report, std::chrono::system_clock::time_point now);

}  // namespace emstatus::host
