#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <utility>

extern "C" {
__attribute__((visibility("default"))) emstatus::test::TraceCapture Debug;
}

namespace emstatus::test {

void TraceCapture::Print(const char* format, va_list arguments, const char* moduleName) {
  FilteredPrint(format, arguments, moduleName);
}

void TraceCapture::FilteredPrint(const char* format, va_list arguments, const char*) {
  if (throws) throw std::runtime_error("a sink that throws");
  va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  std::string line(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(line.data(), line.size() + 1, format, arguments);
  Note(std::move(line));
}

void TraceCapture::Note(std::string line) {
  const std::lock_guard guard(lock_);
  lines_.push_back(std::move(line));
  arrived_.notify_all();
}

bool TraceCapture::WaitFor(std::string_view text) {
  std::unique_lock guard(lock_);
  return arrived_.wait_for(guard, std::chrono::minutes(1), [&] {
    return std::ranges::any_of(
        lines_, [text](const std::string& line) { return line.find(text) != std::string::npos; });
  });
}

std::vector<std::string> TraceCapture::Take() {
  const std::lock_guard guard(lock_);
  return std::exchange(lines_, {});
}

TraceCapture& Trace() {
  return Debug;
}

bool Holds(const std::vector<std::string>& lines, const std::string& line) {
  return std::ranges::find(lines, line) != lines.end();
}

std::vector<std::string> LinesWithLevels(const std::function<std::vector<std::string>(int level)>& run) {
  const auto isTraced = [](const std::string& line) { return !line.starts_with("@ "); };
  std::vector<std::string> finest = run(5);
  std::vector<int> levels(finest.size(), 5);
  for (int level = 4; level >= 0; --level) {
    std::size_t at = 0;
    for (const std::string& line : run(level)) {
      for (; at < finest.size() && finest[at] != line; ++at) {
        EXPECT_TRUE(isTraced(finest[at])) << "not at level " << level << ": " << finest[at];
      }
      if (at == finest.size()) {
        ADD_FAILURE() << "only at level " << level << ": " << line;
        break;
      }
      levels[at++] = level;
    }
  }
  for (std::size_t i = 0; i < finest.size(); ++i) {
    if (isTraced(finest[i])) finest[i].insert(0, std::to_string(levels[i]) + ' ');
  }
  return finest;
}

}  // namespace emstatus::test
