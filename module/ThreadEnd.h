#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace emstatus {

/// Tells whether a thread has left its routine, so that another can wait for that with a limit. [any thread]
class ThreadEnd {
 public:
  void Begin() { Set(false); }
  void Finish() { Set(true); }

  /// Waits at most `timeoutMs` milliseconds; whether the routine has been left (or never begun).
  bool Wait(std::uint32_t timeoutMs) {
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, std::chrono::milliseconds(timeoutMs), [this] { return finished_; });
  }

 private:
  void Set(bool finished) {
    const std::lock_guard guard(lock_);
    finished_ = finished;
    changed_.notify_all();
  }

  std::mutex lock_;
  std::condition_variable changed_;
  bool finished_ = true;
};

}  // namespace emstatus
