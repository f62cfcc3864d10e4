#pragma once

#include <cstdlib>
#include <string>

#include "platform/CDebugClient.h"
#include "tests/support/TraceCapture.h"

namespace emstatus::test {

/// Has the library's trace client write up to `level` into the trace capture, which starts empty, as long as the
/// object lives; then level 0 again.
class TraceLevel {
 public:
  explicit TraceLevel(unsigned level) {
    setenv("QX_LOG_DEBUG_LEVEL", std::to_string(level).c_str(), 1);
    debugClient.Init("EM_STATUS");
    Trace().Take();
  }
  ~TraceLevel() {
    unsetenv("QX_LOG_DEBUG_LEVEL");
    debugClient.Init("EM_STATUS");
  }
  TraceLevel(const TraceLevel&) = delete;
  TraceLevel& operator=(const TraceLevel&) = delete;
};

}  // namespace emstatus::test
