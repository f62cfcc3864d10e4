#pragma once

#include <csignal>

namespace emstatus::host {

/// SIGINT, SIGTERM, SIGHUP and SIGPIPE (the last two unless they are ignored) as a descriptor: blocked in
/// this thread and in all that it starts, so that nothing ever runs in a signal handler. To be made before
/// any other thread. [main thread]
class StopSignals {
 public:
  StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  /// Signals act again as before.
  ~StopSignals();

  /// Readable once a signal has come.
  int Descriptor() const { return descriptor_; }
  bool HasCome() const;

 private:
  sigset_t before_{};
  int descriptor_;
};

}  // namespace emstatus::host
