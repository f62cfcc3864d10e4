#pragma once

#include <pthread.h>

#include <cstdint>
#include <memory>

namespace emstatus {

/// One POSIX thread. Driven by one controlling thread; the started thread does not touch its own CThread.
/// Nothing throws; every step is written to the trace. Destruction leaves a running thread alone.
class CThread {
 public:
  using StartRoutine = void* (*)(void*);

  CThread() = default;
  CThread(const CThread&) = delete;
  CThread& operator=(const CThread&) = delete;

  /// Runs `startRoutine(argument)` on a new thread. `prio` other than 0 asks for round-robin scheduling at
  /// that priority, which the process gets only where it has the right to it. `suspend` and `stackSize`
  /// (bytes) are only told in the trace. A waitable thread is joined, one that is not is detached. False,
  /// with errno set, when a step failed. A thread held before is forgotten, or first killed: see
  /// SetKillAliveThread().
  bool Start(StartRoutine startRoutine, void* argument, std::int32_t prio, bool suspend,
             std::uint32_t stackSize, bool waitable);

  /// Joins the thread. Waits as long as it runs: `timeoutMs` other than 0xFFFFFFFF is answered with a warning
  /// in the trace. True when it has ended or there was none; false for a detached thread or when joining
  /// failed.
  bool WaitForTermination(std::uint32_t timeoutMs);

  /// Cancels a detached thread; joins a waitable one, however long it runs. True when it has ended, is gone
  /// or was told to end; false when there is none or when joining or cancelling failed.
  bool Kill();

  /// Whether Start() first kills the thread still held here. Off at first.
  void SetKillAliveThread(bool kill) { killAliveThread_ = kill; }

  /// The thread; 0: none.
  pthread_t Id() const { return thread_; }

 private:
  struct Body;

  bool SetAttributes(pthread_attr_t& attributes, std::int32_t prio) const;
  int Create(const pthread_attr_t& attributes, StartRoutine startRoutine, void* argument);
  bool Cancel();
  void Forget();
  static void* Run(void* body);

  pthread_t thread_ = 0;
  bool killAliveThread_ = false;
  bool waitable_ = false;
  std::shared_ptr<Body> body_;
};

}  // namespace emstatus
