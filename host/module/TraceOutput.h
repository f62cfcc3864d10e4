#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include <emstatus/TraceSink.h>

namespace emstatus::host {

/// The module's trace, line by line with the time in front ("10:15:02.123 text"). [any thread]
class TraceOutput final : public TraceSink {
 public:
  using Writer = void (*)(std::string_view text);

  /// `write` gets whole lines; one call at a time.
  explicit TraceOutput(Writer write) : write_(write) {}

  bool IsSink() override { return true; }
  void Print(const char* format, va_list arguments, const char* moduleName) override;
  void FilteredPrint(const char* format, va_list arguments, const char* moduleName) override;

 private:
  // Constant after construction
  const Writer write_;
  // Own lock: the order of lines
  std::mutex lock_;
};

/// The lines of a message behind a time stamp. Messages begin with line feeds instead of ending with them, so
/// those at either end are dropped.
std::string TraceLines(std::string_view message, std::string_view stamp);

/// Writes to standard error.
void WriteToStandardError(std::string_view text);

}  // namespace emstatus::host
