#include "tests/platform/ThreadFaults.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cstring>

namespace {

thread_local const char* failingFunction = nullptr;
thread_local int failure = 0;

bool Fails(const char* function) {
  return failingFunction != nullptr && std::strcmp(failingFunction, function) == 0;
}

template <typename Function>
Function* Real(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// The program's own definitions stand before those of the C library.
#define EM_CAN_FAIL(name, parameters, arguments)                          \
  extern "C" __attribute__((visibility("default"))) int name parameters { \
    return Fails(#name) ? failure : Real(&name, #name) arguments;         \
  }

EM_CAN_FAIL(pthread_condattr_setclock, (pthread_condattr_t * a, clockid_t clock) noexcept, (a, clock))
EM_CAN_FAIL(pthread_cond_init, (pthread_cond_t * c, const pthread_condattr_t* a) noexcept, (c, a))
EM_CAN_FAIL(pthread_mutex_init, (pthread_mutex_t * m, const pthread_mutexattr_t* a) noexcept, (m, a))
EM_CAN_FAIL(pthread_attr_init, (pthread_attr_t * a) noexcept, (a))
EM_CAN_FAIL(pthread_attr_setdetachstate, (pthread_attr_t * a, int state) noexcept, (a, state))
EM_CAN_FAIL(pthread_attr_setschedpolicy, (pthread_attr_t * a, int policy) noexcept, (a, policy))
EM_CAN_FAIL(pthread_attr_getschedparam, (const pthread_attr_t* a, sched_param* p) noexcept, (a, p))
EM_CAN_FAIL(pthread_create,
            (pthread_t * t, const pthread_attr_t* a, void* (*routine)(void*), void* argument) noexcept,
            (t, a, routine, argument))
EM_CAN_FAIL(pthread_join, (pthread_t t, void** result), (t, result))
EM_CAN_FAIL(pthread_cancel, (pthread_t t), (t))

namespace emstatus::test {

ThreadFault::ThreadFault(const char* function, int error) {
  failingFunction = function;
  failure = error;
}

ThreadFault::~ThreadFault() {
  failingFunction = nullptr;
}

}  // namespace emstatus::test
