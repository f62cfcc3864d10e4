#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/CDebugClient.h"

namespace emstatus::test {

/// Gives the library's trace client a level for as long as this lives; level 0 and off again after that.
/// For test programs that link em_platform. [no other thread traces while it comes and goes]
class TraceLevel {
 public:
  explicit TraceLevel(std::uint32_t level) {
    setenv("QX_LOG_DEBUG_LEVEL", std::to_string(level).c_str(), 1);
    debugClient.Init("EM_STATUS");
  }
  ~TraceLevel() {
    unsetenv("QX_LOG_DEBUG_LEVEL");
    debugClient.Init("EM_STATUS");
  }
  TraceLevel(const TraceLevel&) = delete;
  TraceLevel& operator=(const TraceLevel&) = delete;
};

}  // namespace emstatus::test
