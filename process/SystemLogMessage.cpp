#include "process/SystemLogMessage.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace emstatus {

namespace {

const char* SkipLeadingLineFeeds(const char* format) {
  const char* text = format + std::strspn(format, "\n");
  return *text != '\0' ? text : format;
}

}  // namespace

std::size_t FormatSystemLogMessage(char (&buffer)[kSystemLogMessageSize], const char* format,
                                   std::va_list arguments) {
  buffer[0] = '\0';
  if (format == nullptr) return 0;
  if (std::vsnprintf(buffer, sizeof buffer, SkipLeadingLineFeeds(format), arguments) < 0) {
    constexpr char kReplacement[] = "ERROR: cann't format message";
    std::memcpy(buffer, kReplacement, sizeof kReplacement);
  }
  return std::strlen(buffer);
}

const char* ProgramShortName() noexcept {
  return program_invocation_short_name;
}

}  // namespace emstatus
