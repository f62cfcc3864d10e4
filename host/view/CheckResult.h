#pragma once

#include <chrono>
#include <string>

#include "host/view/NodeFinder.h"
#include "host/view/Report.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

/// What a check plugin prints and returns.
struct CheckResult {
  static constexpr int kUnknownCode = 3;

  /// 0 OK, 1 warning, 2 critical, 3 unknown.
  int code = kUnknownCode;
  /// A line of fewer than 80 characters with the leaf to blame, "|" and performance data, then a line for
  /// each further cause; with line ends.
  std::string output;
};

/// Checks a node of the report, the root being the whole system. Its status is the one that counts, so that
/// what redundancy covers is a warning. UNKNOWN where nothing of it could be read, unless it failed, and when
/// the report is older at `now` than `maximumAge`. [any thread]
CheckResult CheckNode(const NodePath& node, const Report& report, const StatusWords& words,
                      std::chrono::system_clock::time_point now, std::chrono::seconds maximumAge);

/// UNKNOWN, and why; further lines of the reason follow the first one. [any thread]
CheckResult UnknownResult(const std::string& why);

}  // namespace emstatus::host
