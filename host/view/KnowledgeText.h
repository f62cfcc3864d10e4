#pragma once

#include <string>

#include "host/view/Report.h"

/// How much is known of a node, and since when, in short texts without line ends. [any thread]
namespace emstatus::host {

/// "18 of 20 read, oldest 4 s".
std::string CoverageText(const Coverage& coverage);

/// "there is no such object now"; empty for a leaf that has its object, or stands for none.
std::string AbsenceText(const StatusNode& leaf);

/// "tolerates 1 more failure (chassis fans)".
std::string MarginText(const RedundancyMargin& margin);

/// Status word, with what keeps it from being the part's own of now: "OK (stale)", "Error (simulated)".
std::string StatusText(const StatusNode& node, const std::string& statusWord);

/// "2026-03-01 10:15:02", "at least since 2026-03-01 10:15:02" for what was so at the first scan already, and
/// why it is not known where only one scan was made.
std::string SinceText(const StatusNode& node, const Report& report);

/// What the raw value of a leaf means ("lost"), where it was asked for its state; else empty.
std::string RawStateWord(const StatusNode& leaf);

/// The same behind the value: "14 (lost)"; empty for a node that has none.
std::string RawValueText(const StatusNode& leaf);

/// "EM_STATUS.ini:98, [Component.Fans] Status.Failed".
std::string RuleText(const Rule& rule);

}  // namespace emstatus::host
