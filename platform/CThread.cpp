#include "platform/CThread.h"

#include <cerrno>

#include <errno.h>
#include <sched.h>

#include <new>
#include <utility>

#include "platform/CDebugClient.h"
#include "platform/Mutex.h"

namespace emstatus {
namespace {

/// A thread's id as trace lines show it: its lower half.
unsigned int Shown(pthread_t thread) {
  return static_cast<unsigned int>(thread);
}

bool SetPriority(pthread_attr_t& attributes, std::int32_t prio) {
  // Whether the policy is inherited all the same is left as it is: a process without the right to real-time
  // scheduling could not create the thread otherwise.
  int error = pthread_attr_setschedpolicy(&attributes, SCHED_RR);
  if (error != 0) {
    EM_TRACE_ALWAYS(2, "\npthread_attr_setschedpolicy failed: %d", error);
    errno = error;
    return false;
  }
  sched_param parameters{};
  error = pthread_attr_getschedparam(&attributes, &parameters);
  if (error != 0) {
    EM_TRACE_ALWAYS(2, "\npthread_attr_getschedparam failed: %d", error);
    errno = error;
    return false;
  }
  parameters.sched_priority = prio;
  error = pthread_attr_setschedparam(&attributes, &parameters);
  if (error != 0) {
    EM_TRACE_ALWAYS(2, "\npthread_attr_setschedparam failed: error=%d priority=%d", error, prio);
    errno = error;
    return false;
  }
  return true;
}

class Attributes {
 public:
  Attributes() : error_(pthread_attr_init(&attributes_)) {}
  ~Attributes() {
    if (error_ == 0) pthread_attr_destroy(&attributes_);
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  int Error() const { return error_; }
  pthread_attr_t& Get() { return attributes_; }

 private:
  pthread_attr_t attributes_;
  const int error_;
};

}  // namespace

/// What the thread and its CThread share. The id of a detached thread means nothing once it has ended, so the
/// thread says when it does, and the lock keeps it from ending while it is being asked about.
struct CThread::Body {
  Body(StartRoutine startRoutine, void* startArgument) : routine(startRoutine), argument(startArgument) {}

  const StartRoutine routine;
  void* const argument;
  // The thread's share, from before its creation until it takes it.
  std::shared_ptr<Body> forThread;
  Mutex lock;
  bool ended EM_GUARDED_BY(lock) = false;
};

void* CThread::Run(void* body) {
  // Also when the thread is cancelled.
  struct End {
    const std::shared_ptr<Body> body;
    ~End() {
      const MutexGuard guard(body->lock);
      body->ended = true;
    }
  };
  const End end{std::move(static_cast<Body*>(body)->forThread)};
  return end.body->routine(end.body->argument);
}

bool CThread::Start(StartRoutine startRoutine, void* argument, std::int32_t prio, bool suspend,
                    std::uint32_t stackSize, bool waitable) {
  EM_TRACE_ALWAYS(
      5,
      "\nCThread::Start: Start a thread, Prio=%d, Suspend=%d, StackSize=0x%08x, Waitable=%d, KillAliveThread=%d",
      prio, suspend ? 1 : 0, stackSize, waitable ? 1 : 0, killAliveThread_ ? 1 : 0);
  if (killAliveThread_ && thread_ != 0) Kill();
  waitable_ = waitable;
  Attributes attributes;
  if (attributes.Error() != 0) {
    EM_TRACE_ALWAYS(2, "\npthread_attr_init failed: %d", attributes.Error());
    errno = attributes.Error();
    return false;
  }
  EM_TRACE_ALWAYS(4, "\npthread_attr_init: %d", attributes.Error());
  if (!SetAttributes(attributes.Get(), prio)) return false;
  const int error = Create(attributes.Get(), startRoutine, argument);
  if (error != 0) {
    EM_TRACE_ALWAYS(2, "\npthread_create failed: %d", error);
    errno = error;
    return false;
  }
  EM_TRACE_ALWAYS(2, "\nCThread::Start: thread=0x%08X created, Prio=%d, Waitable=%d, StackSize=0x%x",
                  Shown(thread_), prio, waitable ? 1 : 0, stackSize);
  sched_yield();
  return true;
}

bool CThread::SetAttributes(pthread_attr_t& attributes, std::int32_t prio) const {
  if (!waitable_) {
    const int error = pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (error != 0) {
      EM_TRACE_ALWAYS(2, "\npthread_attr_setdetachstate failed: %d", error);
      errno = error;
      return false;
    }
  }
  EM_TRACE_ALWAYS(2, "\nThreadPrio=%d", prio);
  return prio == 0 || SetPriority(attributes, prio);
}

int CThread::Create(const pthread_attr_t& attributes, StartRoutine startRoutine, void* argument) {
  std::shared_ptr<Body> body;
  try {
    body = std::make_shared<Body>(startRoutine, argument);
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
  body->forThread = body;
  pthread_t thread = 0;
  const int error = pthread_create(&thread, &attributes, &CThread::Run, body.get());
  if (error != 0) {
    body->forThread.reset();
    return error;
  }
  thread_ = thread;
  body_ = std::move(body);
  return 0;
}

bool CThread::WaitForTermination(std::uint32_t timeoutMs) {
  constexpr std::uint32_t kNoTimeout = 0xFFFFFFFF;
  if (thread_ == 0) {
    EM_TRACE_ALWAYS(1, "\nCThread::WaitForTermination: Thread = 0x0%08X doesn't exist !", Shown(thread_));
    return true;
  }
  if (timeoutMs != kNoTimeout) {
    EM_TRACE_ALWAYS(
        1, "\nCThread::WaitForTermination: WARNING: can't wait for Thread = 0x%08X termination with timeout",
        Shown(thread_));
  }
  if (!waitable_) {
    EM_TRACE_ALWAYS(1, "\nCThread::WaitForTermination: WARNING: Can't wait for detached thread 0x%08X",
                    Shown(thread_));
    return false;
  }
  void* result = nullptr;
  const int error = pthread_join(thread_, &result);
  if (error != 0) {
    EM_TRACE_ALWAYS(1,
                    "\nCThread::WaitForTermination: ERROR ! ThreadJoin failed, Thread = 0x%08X, Err = 0x%08x",
                    Shown(thread_), static_cast<unsigned int>(error));
    return false;
  }
  EM_TRACE_ALWAYS(1, "\nCThread::WaitForTermination: a joinable Thread = 0x%08X has terminated, pstat=%p",
                  Shown(thread_), result);
  Forget();
  return true;
}

bool CThread::Kill() {
  EM_TRACE_ALWAYS(1, "\nCThread::Kill: Try to kill the Thread = 0x%08X", Shown(thread_));
  if (thread_ == 0) {
    EM_TRACE_ALWAYS(1, "\nCThread::Kill: Thread = 0x0%08X doesn't exist !", Shown(thread_));
    return false;
  }
  if (!waitable_) return Cancel();
  EM_TRACE_ALWAYS(1, "\nCThread::Kill: Try to join a joinable Thread = 0x%08X", Shown(thread_));
  void* result = nullptr;
  const int error = pthread_join(thread_, &result);
  if (error != 0) {
    EM_TRACE_ALWAYS(1, "\nCThread::Kill: ERROR ! ThreadJoin failed, Thread = 0x%08X, Err = 0x%08x",
                    Shown(thread_), static_cast<unsigned int>(error));
    return false;
  }
  EM_TRACE_ALWAYS(1, "\nCThread::Kill: a joinable Thread = 0x%08X has terminated, pstat=%p", Shown(thread_),
                  result);
  Forget();
  return true;
}

bool CThread::Cancel() {
  EM_TRACE_ALWAYS(1, "\nCThread::Kill: Try to kill a non-joinable Thread = 0x0%08X", Shown(thread_));
  const pthread_t thread = thread_;
  const std::shared_ptr<Body> body = body_;
  Forget();
  int error = 0;
  {
    const MutexGuard guard(body->lock);
    if (body->ended) return true;
    EM_TRACE_ALWAYS(2, "\nCThread::Kill: Killing a non-joinable thread 0x%08X", Shown(thread));
    error = pthread_cancel(thread);
  }
  if (error != 0) {
    EM_TRACE_ALWAYS(2, "\nCThread::Kill: unable to cancel a non-joinable thread 0x%08X (err = 0x%08x)",
                    Shown(thread), static_cast<unsigned int>(error));
    return false;
  }
  EM_TRACE_ALWAYS(2, "\nCThread::Kill: a non-joinable thread 0x%08X cancel invoked", Shown(thread));
  return true;
}

void CThread::Forget() {
  thread_ = 0;
  body_.reset();
}

}  // namespace emstatus
