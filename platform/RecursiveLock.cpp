#include "platform/RecursiveLock.h"

namespace emstatus {

RecursiveLock::RecursiveLock() noexcept : initialised_(pthread_mutex_init(&mutex_, nullptr) == 0) {}

RecursiveLock::~RecursiveLock() {
  if (initialised_) pthread_mutex_destroy(&mutex_);
}

void RecursiveLock::Lock() {
  if (!initialised_) return;
  const pthread_t self = pthread_self();
  // Only this thread can have stored its own id, so no stronger order is needed.
  if (owner_.load(std::memory_order_relaxed) != self) {
    pthread_mutex_lock(&mutex_);
    owner_.store(self, std::memory_order_relaxed);
  }
  ++count_;
}

void RecursiveLock::Unlock() {
  if (!initialised_ || owner_.load(std::memory_order_relaxed) != pthread_self()) return;
  if (--count_ > 0) return;
  owner_.store(0, std::memory_order_relaxed);
  pthread_mutex_unlock(&mutex_);
}

}  // namespace emstatus
