#pragma once

namespace emstatus::test {

/// Lets one function of the thread library fail on the calling thread for as long as this lives. Functions
/// that can: the ones defined in ThreadFaults.cpp.
class ThreadFault {
 public:
  ThreadFault(const char* function, int error);
  ~ThreadFault();
  ThreadFault(const ThreadFault&) = delete;
  ThreadFault& operator=(const ThreadFault&) = delete;
};

}  // namespace emstatus::test
