#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <vector>

#include "host/machine/Request.h"

namespace emstatus::host {

/// Something that the main thread has to know of.
struct Notice {
  enum class Kind {
    /// An event of the module; `event` is a copy of it.
    Event,
    /// A scan has ended; `led` is the value of the error LED.
    ScanEnd,
    /// An object of the machine has changed its state.
    Changed,
  };

  Kind kind = Kind::Changed;
  std::chrono::system_clock::time_point time;
  Request event;
  std::uint32_t led = 0;
};

/// Carries notices from any thread to the main thread, in order.
class NoticeQueue {
 public:
  NoticeQueue();
  NoticeQueue(const NoticeQueue&) = delete;
  NoticeQueue& operator=(const NoticeQueue&) = delete;
  ~NoticeQueue();

  /// Stamps the notice with the time and appends it. [any thread]
  void Push(Notice notice);

  /// All that has come, oldest first; empty when nothing has. [main thread]
  std::vector<Notice> Take();

  /// Readable while there is something to take. [any thread]
  int Descriptor() const { return descriptor_; }

 private:
  const int descriptor_;
  std::mutex lock_;
  // Guarded by lock_
  std::vector<Notice> notices_;
};

}  // namespace emstatus::host
