#include "platform/SystemLog.h"

#include <syslog.h>

#include "process/SystemLogMessage.h"

namespace emstatus {

constinit const SystemLogCalls kSystemLogCalls = {
    openlog, [](int priority, const char* text) { syslog(priority, "%s", text); }, closelog};

SystemLog::~SystemLog() {
  const MutexGuard guard(lock_);
  if (open_) calls_.close();
}

void SystemLog::Write(const char* format, va_list arguments) {
  char message[kSystemLogMessageSize];
  FormatSystemLogMessage(message, format, arguments);
  OpenOnce();
  calls_.write(LOG_INFO, message);
}

void SystemLog::OpenOnce() {
  const MutexGuard guard(lock_);
  if (open_) return;
  calls_.open(ProgramShortName(), LOG_PID | LOG_CONS | LOG_NDELAY, LOG_LOCAL1);
  open_ = true;
}

}  // namespace emstatus
