#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <emstatus/TraceSink.h>

namespace emstatus::test {

/// The trace sink of a test program: keeps every message, formatted, in the order of arrival.
/// One object, exported as "Debug"; reach it through Trace(). [any thread]
class TraceCapture final : public TraceSink {
 public:
  bool IsSink() override { return true; }
  void Print(const char* format, va_list arguments, const char* moduleName) override;
  void FilteredPrint(const char* format, va_list arguments, const char* moduleName) override;

  /// Puts a line of a test's own between them.
  void Note(std::string line);

  /// Waits until a line with that text has arrived since the last Take(), at most a minute.
  bool WaitFor(std::string_view text);

  /// What has arrived since the last call; empties the store.
  std::vector<std::string> Take();

  /// Makes every message end in an exception.
  std::atomic<bool> throws{false};

 private:
  std::mutex lock_;
  std::condition_variable arrived_;
  std::vector<std::string> lines_;
};

TraceCapture& Trace();

/// Whether `lines` holds one that is equal to `line`.
bool Holds(const std::vector<std::string>& lines, const std::string& line);

/// The lines that `run` gives for trace level 5, each behind the lowest level (0 to 5) at which they are
/// there too: "2 line". What begins with "@ " was not traced: it stays as it is, and must be there at every
/// level.
std::vector<std::string> LinesWithLevels(const std::function<std::vector<std::string>(int level)>& run);

}  // namespace emstatus::test
