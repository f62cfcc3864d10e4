#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>

#include "platform/ThreadSafety.h"

namespace emstatus {

/// A lock that the thread which holds it may take again: a plain mutex with its owner's id and a count.
/// When the mutex could not be initialised nothing is locked at all, and nothing is reported. [any thread]
class EM_CAPABILITY("mutex") RecursiveLock {
 public:
  RecursiveLock() noexcept;
  ~RecursiveLock();
  RecursiveLock(const RecursiveLock&) = delete;
  RecursiveLock& operator=(const RecursiveLock&) = delete;

  /// Waits until the lock is free and takes it; the thread that holds it only counts one more.
  void Lock() EM_ACQUIRE();

  /// Gives one Lock() back; the last one frees the lock. Does nothing on a thread that does not hold it.
  void Unlock() EM_RELEASE();

  /// Whether the mutex could be initialised.
  bool Initialised() const { return initialised_; }

 private:
  pthread_mutex_t mutex_;
  // 0, which is no thread's id, while nobody holds the lock.
  std::atomic<pthread_t> owner_{0};
  // Touched by the owner only.
  std::uint32_t count_ = 0;
  const bool initialised_;
};

/// Holds a RecursiveLock from its construction to its destruction.
class EM_SCOPED_CAPABILITY RecursiveGuard {
 public:
  explicit RecursiveGuard(RecursiveLock& lock) EM_ACQUIRE(lock) : lock_(lock) { lock_.Lock(); }
  ~RecursiveGuard() EM_RELEASE() { lock_.Unlock(); }
  RecursiveGuard(const RecursiveGuard&) = delete;
  RecursiveGuard& operator=(const RecursiveGuard&) = delete;

 private:
  RecursiveLock& lock_;
};

}  // namespace emstatus
