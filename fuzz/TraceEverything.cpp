// The host's side of the trace for fuzz programs: every line of every level is formatted, and dropped.

#include <cstdio>
#include <cstdlib>

#include <emstatus/TraceSink.h>

#include "platform/CDebugClient.h"

namespace emstatus::fuzz {

class FormattingSink final : public TraceSink {
 public:
  bool IsSink() override { return true; }
  void Print(const char* format, va_list arguments, const char* moduleName) override {
    FilteredPrint(format, arguments, moduleName);
  }
  void FilteredPrint(const char* format, va_list arguments, const char*) override {
    std::vsnprintf(nullptr, 0, format, arguments);
  }
};

namespace {

[[maybe_unused]] const bool kTraced = [] {
  setenv("QX_LOG_DEBUG_LEVEL", "5", 1);
  debugClient.Init("EM_STATUS");
  return true;
}();

}  // namespace
}  // namespace emstatus::fuzz

extern "C" {
__attribute__((visibility("default"))) emstatus::fuzz::FormattingSink Debug;
}
