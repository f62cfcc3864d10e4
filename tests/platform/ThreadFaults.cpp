#include "tests/platform/ThreadFaults.h"

#include <pthread.h>

#include <cstring>

namespace {

thread_local const char* failingFunction = nullptr;
thread_local int failure = 0;

bool Fails(const char* function) {
  return failingFunction != nullptr && std::strcmp(failingFunction, function) == 0;
}

}  // namespace

// The linker leads this program's calls here (--wrap), but not those of the libraries that it uses.
// clang-format off
#define EM_CAN_FAIL(name, parameters, arguments)              \
  extern "C" int __real_##name parameters;                    \
  extern "C" int __wrap_##name parameters;                    \
  extern "C" int __wrap_##name parameters {                   \
    return Fails(#name) ? failure : __real_##name arguments;  \
  }

EM_CAN_FAIL(pthread_condattr_setclock, (pthread_condattr_t* a, clockid_t clock), (a, clock))
EM_CAN_FAIL(pthread_cond_init, (pthread_cond_t* c, const pthread_condattr_t* a), (c, a))
EM_CAN_FAIL(pthread_mutex_init, (pthread_mutex_t* m, const pthread_mutexattr_t* a), (m, a))
EM_CAN_FAIL(pthread_attr_init, (pthread_attr_t* a), (a))
EM_CAN_FAIL(pthread_attr_setdetachstate, (pthread_attr_t* a, int state), (a, state))
EM_CAN_FAIL(pthread_attr_setschedpolicy, (pthread_attr_t* a, int policy), (a, policy))
EM_CAN_FAIL(pthread_attr_getschedparam, (const pthread_attr_t* a, sched_param* p), (a, p))
EM_CAN_FAIL(pthread_create, (pthread_t* t, const pthread_attr_t* a, void* (*routine)(void*), void* argument), (t, a, routine, argument))
EM_CAN_FAIL(pthread_join, (pthread_t t, void** result), (t, result))
EM_CAN_FAIL(pthread_cancel, (pthread_t t), (t))
// clang-format on

namespace emstatus::test {

ThreadFault::ThreadFault(const char* function, int error) {
  failingFunction = function;
  failure = error;
}

ThreadFault::~ThreadFault() {
  failingFunction = nullptr;
}

}  // namespace emstatus::test
