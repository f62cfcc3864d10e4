#include "platform/EventState.h"

#include <time.h>
#include <unistd.h>

namespace emstatus {

int EventState::Build(Step& step) {
  step = Step::kClock;
  int result = pthread_condattr_init(&attribute);
  if (result != 0) return result;
  result = pthread_condattr_setclock(&attribute, CLOCK_MONOTONIC);
  if (result == 0) {
    step = Step::kCondition;
    result = pthread_cond_init(&condition, &attribute);
    if (result == 0) {
      step = Step::kMutex;
      result = pthread_mutex_init(&mutex, nullptr);
      if (result == 0) return 0;
      pthread_cond_destroy(&condition);
    }
  }
  pthread_condattr_destroy(&attribute);
  return result;
}

void EventState::TakeDown() {
  for (;;) {
    {
      const EventMutexGuard guard(*this);
      if (waiters == 0) break;
    }
    sleep(1);
  }
  pthread_cond_destroy(&condition);
  pthread_condattr_destroy(&attribute);
  pthread_mutex_destroy(&mutex);
}

bool EventState::Wake() {
  return (isManual ? pthread_cond_broadcast(&condition) : pthread_cond_signal(&condition)) == 0;
}

}  // namespace emstatus
