#include "host/machine/ScanGate.h"

namespace emstatus::host {

void ScanGate::Pass() {
  std::unique_lock guard(lock_);
  changed_.wait(guard, [this] { return open_ || let_ > 0; });
  let_ -= open_ ? 0U : 1U;
}

void ScanGate::LetOne() {
  {
    const std::lock_guard guard(lock_);
    ++let_;
  }
  changed_.notify_one();
}

void ScanGate::Open() {
  {
    const std::lock_guard guard(lock_);
    open_ = true;
  }
  changed_.notify_one();
}

}  // namespace emstatus::host
