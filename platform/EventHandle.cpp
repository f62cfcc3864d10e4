#include "platform/EventHandle.h"

#include <errno.h>
#include <sched.h>
#include <time.h>

#include <new>

#include "platform/CDebugClient.h"
#include "platform/EventNameTable.h"
#include "platform/EventState.h"

namespace emstatus {
namespace {

/// What became of a wish for an event.
struct Creation {
  EventState* event = nullptr;
  bool joined = false;
  // When a thread call failed: the event that would have been, the step and what the call returned.
  const void* failedEvent = nullptr;
  EventState::Step step{};
  int result = 0;
};

Creation BuildEvent(bool signaled, bool manual, const char* name) {
  Creation made;
  try {
    auto event = std::make_unique<EventState>(
        signaled, manual, name != nullptr ? std::make_shared<const std::string>(name) : nullptr);
    made.result = event->Build(made.step);
    if (made.result != 0) {
      made.failedEvent = event->Id();
    } else if (name != nullptr && !eventNames.Insert(*event)) {
      event->TakeDown();
    } else {
      made.event = event.release();
    }
  } catch (const std::bad_alloc&) {
    // As quiet as a missing event always is.
  }
  return made;
}

Creation JoinOrBuildEvent(bool signaled, bool manual, const char* name) {
  const RecursiveGuard guard(eventNames.EventLock());
  EventState* const existing = eventNames.Find(name);
  if (existing == nullptr) return BuildEvent(signaled, manual, name);
  ++existing->references;
  Creation joined;
  joined.event = existing;
  joined.joined = true;
  return joined;
}

void TellFailure(const Creation& made, const char* name, bool signaled) {
  if (made.failedEvent == nullptr) return;
  const int flag = signaled ? 1 : 0;
  switch (made.step) {
    case EventState::Step::kClock:
      EM_TRACE_ALWAYS(
          3,
          "pthread_condattr_setclock(): ## ERROR ##: Set CLOCK_MONOTONIC failed (ret=%d) for event %p <%s> (IsSignaled=%d)\n",
          made.result, made.failedEvent, name, flag);
      break;
    case EventState::Step::kCondition:
      EM_TRACE_ALWAYS(
          3,
          "pthread_cond_init(), CLOCK_MONOTONIC: ## ERROR ##: failed (ret=%d) on event %p <%s> (IsSignaled=%d)\n",
          made.result, made.failedEvent, name, flag);
      break;
    case EventState::Step::kMutex:
      EM_TRACE_ALWAYS(
          3,
          "pthread_mutex_init(), CLOCK_MONOTONIC: ## ERROR ##: failed (ret=%d) on event %p <%s> (IsSignaled=%d)\n",
          made.result, made.failedEvent, name, flag);
      break;
  }
}

void TellJoined(const EventState& event, bool manualWanted) {
  EM_TRACE_ALWAYS(3, "refCount for event %p <%s> incremented (IsSignaled=%d)\n", event.Id(), event.Name(),
                  event.Signaled());
  if (event.isManual != manualWanted) {
    EM_TRACE_ALWAYS(1, "WARNING: manual setting mismatch for event %p <%s>\n", event.Id(), event.Name());
  }
}

/// Drops one reference; whether it was the last, which also takes the name out of the table.
bool DropReference(EventState& event, EventName& name, int& signaled) {
  const RecursiveGuard guard(eventNames.EventLock());
  name = event.name;
  signaled = event.Signaled();
  if (--event.references > 0) return false;
  if (event.name) eventNames.Remove(event);
  return true;
}

/// Keeps a release whole: it sleeps and traces, and runs in a destructor, from where no cancellation may
/// escape.
class NotCancelled {
 public:
  NotCancelled() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }
  ~NotCancelled() { pthread_setcancelstate(before_, nullptr); }
  NotCancelled(const NotCancelled&) = delete;
  NotCancelled& operator=(const NotCancelled&) = delete;

 private:
  int before_ = PTHREAD_CANCEL_ENABLE;
};

/// Counts a thread as waiting, to the end of the wait or of the thread.
class Waiter {
 public:
  explicit Waiter(EventState& event) : event_(event) { ++event_.waiters; }
  ~Waiter() { --event_.waiters; }
  Waiter(const Waiter&) = delete;
  Waiter& operator=(const Waiter&) = delete;

 private:
  EventState& event_;
};

timespec Later(const timespec& begin, std::uint32_t milliseconds) {
  constexpr long kNanoseconds = 1'000'000'000;
  timespec later = begin;
  later.tv_sec += milliseconds / 1000;
  later.tv_nsec += milliseconds % 1000 * 1'000'000L;
  if (later.tv_nsec >= kNanoseconds) {
    later.tv_sec += later.tv_nsec / kNanoseconds;
    later.tv_nsec %= kNanoseconds;
  }
  return later;
}

/// Waits on the condition; what the wait call returned. The event's mutex is held.
int WaitForWakeUp(EventState& event, std::uint32_t timeoutMs, bool traceOn) {
  const Waiter waiter(event);
  int result = 0;
  if (timeoutMs == kNoTimeout) {
    do {
      result = pthread_cond_wait(&event.condition, &event.mutex);
    } while (result == EINTR);
    return result;
  }
  timespec begin{};
  clock_gettime(CLOCK_MONOTONIC, &begin);
  const timespec deadline = Later(begin, timeoutMs);
  if (traceOn) {
    EM_TRACE_ALWAYS(
        5,
        "prepare time for waiting on event %p <%s> (ts_beg:sec=%ld,ts_beg:nsec=%ld) -> (ts:sec=%ld,ts:nsec=%ld)\n",
        event.Id(), event.Name(), begin.tv_sec, begin.tv_nsec, deadline.tv_sec, deadline.tv_nsec);
  }
  do {
    result = pthread_cond_timedwait(&event.condition, &event.mutex, &deadline);
  } while (result == EINTR);
  return result;
}

const char* Word(EventWaitResult result) {
  switch (result) {
    case EVENT_SIGNAL:
      return "SIGNAL";
    case EVENT_TIMEOUT:
      return "TIMEOUT";
    case EVENT_FAILURE:
      break;
  }
  return "FAILURE";
}

/// A wait, and what its last line tells, taken before the event may go.
struct Waiting {
  EventWaitResult result = EVENT_FAILURE;
  bool alreadySignaled = false;
  int locked = 0;
  int waited = 0;
  EventName name;
  int manual = 0;
  int signaled = 0;
};

Waiting WaitUnderLock(EventState& event, std::uint32_t timeoutMs, bool traceOn) {
  Waiting wait;
  const EventMutexGuard guard(event);
  wait.locked = guard.Result();
  if (wait.locked == 0) {
    wait.alreadySignaled = event.isSignaled;
    if (!wait.alreadySignaled) wait.waited = WaitForWakeUp(event, timeoutMs, traceOn);
    if (wait.waited == 0 || event.isSignaled) {
      if (!event.isManual) event.isSignaled = false;
      wait.result = EVENT_SIGNAL;
    } else if (wait.waited == ETIMEDOUT) {
      wait.result = EVENT_TIMEOUT;
    }
  }
  if (traceOn) wait.name = event.name;
  wait.manual = event.Manual();
  wait.signaled = event.Signaled();
  return wait;
}

}  // namespace

EventHandle::EventHandle(const EventHandle& other) {
  Share(other);
}

EventHandle& EventHandle::operator=(const EventHandle& other) {
  // A copy only ever adds a reference: the event that this handle held keeps the one it had, on purpose.
  if (this != &other) Share(other);
  return *this;
}

EventHandle::~EventHandle() {
  Release();
}

void EventHandle::Share(const EventHandle& other) {
  {
    const RecursiveGuard guard(eventNames.EventLock());
    event_ = other.event_;
    closed_ = false;
    if (event_ != nullptr) ++event_->references;
  }
  if (event_ == nullptr) return;
  EM_TRACE_ALWAYS(5, "incr refcount on event %p <%s> (IsSignaled=%d,IsManual=%d)\n", event_->Id(),
                  event_->Name(), event_->Signaled(), event_->Manual());
}

void EventHandle::Release() {
  if (event_ == nullptr) return;
  const NotCancelled whole;
  EventName name;
  int signaled = 0;
  // A last reference of another thread may take the event down from the moment that this one is dropped.
  if (!DropReference(*event_, name, signaled)) {
    EM_TRACE_ALWAYS(5, "decr refcount on event %p <%s> (IsSignaled=%d)\n", static_cast<const void*>(event_),
                    EventState::Printable(name), signaled);
    return;
  }
  event_->TakeDown();
  EM_TRACE_ALWAYS(5, "deleting event %p <%s> (IsSignaled=%d)\n", event_->Id(), event_->Name(),
                  event_->Signaled());
  delete event_;
}

bool EventHandle::Create(bool initiallySignaled, bool manualReset, const char* name) {
  Release();
  const Creation made = name != nullptr ? JoinOrBuildEvent(initiallySignaled, manualReset, name)
                                        : BuildEvent(initiallySignaled, manualReset, name);
  event_ = made.event;
  closed_ = false;
  if (event_ == nullptr) {
    TellFailure(made, name != nullptr ? name : "anon", initiallySignaled);
    return false;
  }
  if (made.joined) {
    TellJoined(*event_, manualReset);
  } else {
    EM_TRACE_ALWAYS(5, "creating event %p <%s> (IsSignaled=%d)\n", event_->Id(), event_->Name(),
                    event_->Signaled());
  }
  return true;
}

bool EventHandle::SetAttributes(bool initiallySignaled, bool manualReset) {
  EventState* const event = Usable();
  if (event == nullptr || event->waiters != 0) return false;
  if (event->isSignaled == initiallySignaled && event->isManual == manualReset) return true;
  EM_TRACE_ALWAYS(
      5,
      "Create event %p <%s>, changing attributes (IsSignaled=%d,IsManual=%d) --> (IsSignaled=%d,IsManual=%d)\n",
      event->Id(), event->Name(), event->Signaled(), event->Manual(), initiallySignaled ? 1 : 0,
      manualReset ? 1 : 0);
  event->isSignaled = initiallySignaled;
  event->isManual = manualReset;
  return true;
}

bool EventHandle::Set() {
  EventState* const event = Usable();
  if (event == nullptr) return false;
  bool woken = false;
  {
    const EventMutexGuard guard(*event);
    EM_TRACE_ALWAYS(5, "Set event %p <%s> IsSignaled=%d --> IsSignaled=1\n", event->Id(), event->Name(),
                    event->Signaled());
    event->isSignaled = true;
    // Under the lock: the released waiter may take the event down as soon as it has the mutex.
    woken = event->Wake();
  }
  sched_yield();
  return woken;
}

bool EventHandle::Pulse() {
  EventState* const event = Usable();
  if (event == nullptr) return false;
  bool woken = false;
  {
    const EventMutexGuard guard(*event);
    EM_TRACE_ALWAYS(5, "Pulse event %p <%s> IsSignaled=%d --> IsSignaled=0\n", event->Id(), event->Name(),
                    event->Signaled());
    event->isSignaled = false;
    woken = event->Wake();
  }
  sched_yield();
  return woken;
}

bool EventHandle::Reset() {
  EventState* const event = Usable();
  if (event == nullptr) return false;
  const EventMutexGuard guard(*event);
  EM_TRACE_ALWAYS(5, "Reset event %p <%s>: IsSignaled=%d --> IsSignaled=0\n", event->Id(), event->Name(),
                  event->Signaled());
  event->isSignaled = false;
  return true;
}

bool EventHandle::Close() {
  EventState* const event = Usable();
  if (event == nullptr) return false;
  EM_TRACE_ALWAYS(5, "Close event %p <%s> IsSignaled=%d --> IsSignaled=1\n", event->Id(), event->Name(),
                  event->Signaled());
  closed_ = true;
  {
    const EventMutexGuard guard(*event);
    event->isSignaled = true;
  }
  return event->Wake();
}

bool EventHandle::Check() const {
  const EventState* const event = Usable();
  if (event == nullptr) return false;
  const bool signaled = event->isSignaled;
  EM_TRACE_ALWAYS(5, "Check event %p <%s> (IsSignaled=%d)\n", event->Id(), event->Name(), signaled ? 1 : 0);
  return signaled;
}

EventWaitResult EventHandle::Wait(std::uint32_t timeoutMs, bool traceOn) {
  EventState* const event = Usable();
  if (event == nullptr) return EVENT_FAILURE;
  const void* const id = event->Id();
  if (traceOn) {
    if (timeoutMs != kNoTimeout) {
      EM_TRACE_ALWAYS(5, "\nwaiting %dms on event %p", static_cast<int>(timeoutMs), id);
    } else {
      EM_TRACE_ALWAYS(5, "\nwaiting forever on event %p", id);
    }
  }
  // From its end neither the event nor this handle need exist.
  const Waiting wait = WaitUnderLock(*event, timeoutMs, traceOn);
  if (!traceOn) return wait.result;
  if (wait.alreadySignaled) {
    EM_TRACE_ALWAYS(5, "event %p <%s> (IsManual=%d) has been already signaled --> New state: IsSignaled=%d\n",
                    id, EventState::Printable(wait.name), wait.manual, wait.signaled);
  } else {
    EM_TRACE_ALWAYS(5, "%s(%d,%d) on event %p <%s> (IsSignaled=%d)\n", Word(wait.result), wait.locked,
                    wait.waited, id, EventState::Printable(wait.name), wait.signaled);
  }
  return wait.result;
}

}  // namespace emstatus
