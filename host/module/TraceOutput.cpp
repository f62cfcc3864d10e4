#include "host/module/TraceOutput.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <vector>

#include "host/machine/TimeText.h"

namespace emstatus::host {
namespace {

std::string Formatted(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  std::array<char, 1024> text{};
  const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
  std::string message;
  if (length >= 0 && std::size_t(length) < text.size()) {
    message.assign(text.data(), std::size_t(length));
  } else if (length >= 0) {
    message.resize(std::size_t(length) + 1);
    std::vsnprintf(message.data(), message.size(), format, again);
    message.pop_back();
  } else {
    message = std::string("(cannot be formatted) ") + format;
  }
  va_end(again);
  return message;
}

}  // namespace

std::string TraceLines(std::string_view message, std::string_view stamp) {
  const std::size_t first = message.find_first_not_of("\r\n");
  if (first == std::string_view::npos) {
    return {};
  }
  message = message.substr(first, message.find_last_not_of("\r\n") - first + 1);
  std::string lines;
  while (!message.empty()) {
    const std::size_t end = message.find('\n');
    lines.append(stamp).append(" ").append(message.substr(0, end)).append("\n");
    message = end == std::string_view::npos ? std::string_view{} : message.substr(end + 1);
  }
  return lines;
}

void TraceOutput::Print(const char* format, va_list arguments, const char* moduleName) {
  FilteredPrint(format, arguments, moduleName);
}

void TraceOutput::FilteredPrint(const char* format, va_list arguments, const char*) {
  const std::string message = Formatted(format, arguments);
  const std::lock_guard guard(lock_);
  const std::string lines = TraceLines(message, ClockText(std::chrono::system_clock::now()));
  if (!lines.empty()) {
    write_(lines);
  }
}

void WriteToStandardError(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
    if (written <= 0) {
      return;
    }
    text.remove_prefix(std::size_t(written));
  }
}

}  // namespace emstatus::host
