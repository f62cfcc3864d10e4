#pragma once

#include <cstdarg>

#include "platform/Mutex.h"

namespace emstatus {

/// The C library's side of the system log, so that a test can see what would be logged.
struct SystemLogCalls {
  void (*open)(const char* identity, int options, int facility);
  void (*write)(int priority, const char* text);
  void (*close)();
};

/// openlog, syslog and closelog.
extern const SystemLogCalls kSystemLogCalls;

/// The way of single messages to the system log: opened with the first one under the program's short name,
/// closed on destruction, and only when it was opened here.
class SystemLog {
 public:
  explicit SystemLog(const SystemLogCalls& calls) : calls_(calls) {}
  ~SystemLog();
  SystemLog(const SystemLog&) = delete;
  SystemLog& operator=(const SystemLog&) = delete;

  /// Logs one message at LOG_INFO, cut to 1023 characters. Line feeds that lead `format` are left out, unless
  /// there is nothing else in it. A message that cannot be formatted is replaced by one that says so. [any
  /// thread]
  void Write(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));

 private:
  void OpenOnce() EM_EXCLUDES(lock_);

  const SystemLogCalls calls_;
  Mutex lock_;
  bool open_ EM_GUARDED_BY(lock_) = false;
};

}  // namespace emstatus
