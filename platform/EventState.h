#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace emstatus {

/// Kept by whoever still has to tell of an event that may be gone by then. None: unnamed.
using EventName = std::shared_ptr<const std::string>;

/// What all handles of one event share.
///
/// The flags and the number of waiters change under the mutex, but are also looked at without it.
struct EventState {
  /// A step of Build().
  enum class Step { kClock, kCondition, kMutex };

  EventState(bool signaled, bool manual, EventName eventName) noexcept
      : isManual(manual), isSignaled(signaled), name(std::move(eventName)) {}
  EventState(const EventState&) = delete;
  EventState& operator=(const EventState&) = delete;

  /// Builds condition, attribute and mutex. Returns 0, or what the call of `step` returned, which failed;
  /// then nothing is left to take down.
  int Build(Step& step);
  /// Waits, looking once a second, until no thread waits on the event; then undoes Build().
  void TakeDown();
  /// Wakes all waiters of a manual-reset event, one of an automatic one. False when that failed.
  bool Wake();

  /// The event as trace lines show it.
  const void* Id() const { return this; }
  const char* Name() const { return Printable(name); }
  int Manual() const { return isManual ? 1 : 0; }
  int Signaled() const { return isSignaled ? 1 : 0; }
  static const char* Printable(const EventName& name) { return name ? name->c_str() : "anon"; }

  pthread_condattr_t attribute;
  pthread_cond_t condition;
  pthread_mutex_t mutex;
  // Guarded by the event lock of the name table
  std::uint32_t references = 1;
  std::atomic<bool> isManual;
  std::atomic<bool> isSignaled;
  const EventName name;
  std::atomic<std::uint32_t> waiters{0};
};

/// Holds the mutex of an event; gives it back also when the thread is cancelled.
class EventMutexGuard {
 public:
  explicit EventMutexGuard(EventState& event)
      : mutex_(event.mutex), result_(pthread_mutex_lock(&event.mutex)) {}
  ~EventMutexGuard() {
    if (result_ == 0) pthread_mutex_unlock(&mutex_);
  }
  EventMutexGuard(const EventMutexGuard&) = delete;
  EventMutexGuard& operator=(const EventMutexGuard&) = delete;
  /// What the lock call returned: 0 when the mutex is held.
  int Result() const { return result_; }

 private:
  pthread_mutex_t& mutex_;
  const int result_;
};

}  // namespace emstatus
