#include "host/machine/ScanGate.h"

namespace emstatus::host {

void ScanGate::Pass() {
  std::unique_lock guard(lock_);
  holds_ = true;
  changed_.notify_all();
  changed_.wait(guard, [this] { return open_ || let_ > 0; });
  let_ -= open_ ? 0U : 1U;
  holds_ = false;
}

bool ScanGate::WaitUntilHeld(std::chrono::milliseconds limit) {
  std::unique_lock guard(lock_);
  return changed_.wait_for(guard, limit, [this] { return holds_ && let_ == 0; });
}

void ScanGate::LetOne() {
  {
    const std::lock_guard guard(lock_);
    ++let_;
  }
  changed_.notify_all();
}

void ScanGate::Open() {
  {
    const std::lock_guard guard(lock_);
    open_ = true;
  }
  changed_.notify_all();
}

}  // namespace emstatus::host
