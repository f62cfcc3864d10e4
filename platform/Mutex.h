#pragma once

#include <mutex>

#include "platform/ThreadSafety.h"

namespace emstatus {

/// std::mutex as clang's thread-safety analysis can follow it. [any thread]
class EM_CAPABILITY("mutex") Mutex {
 public:
  void Lock() EM_ACQUIRE() { mutex_.lock(); }
  void Unlock() EM_RELEASE() { mutex_.unlock(); }
  /// True when the lock was free and is now the caller's; never waits.
  bool TryLock() EM_TRY_ACQUIRE(true) { return mutex_.try_lock(); }

 private:
  std::mutex mutex_;
};

struct AdoptLock {};
inline constexpr AdoptLock kAdoptLock;

/// Holds a Mutex from its construction to its destruction.
class EM_SCOPED_CAPABILITY MutexGuard {
 public:
  explicit MutexGuard(Mutex& mutex) EM_ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
  /// Takes charge of a lock that the caller already holds.
  MutexGuard(Mutex& mutex, AdoptLock) EM_REQUIRES(mutex) : mutex_(mutex) {}
  ~MutexGuard() EM_RELEASE() { mutex_.Unlock(); }
  MutexGuard(const MutexGuard&) = delete;
  MutexGuard& operator=(const MutexGuard&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace emstatus
