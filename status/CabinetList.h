#pragma once

#include <cstdint>
#include <vector>

#include "platform/Mutex.h"
#include "platform/ThreadSafety.h"

namespace emstatus {

/// The cabinets of the server: its own first, then the storage extensions. Repeats stay. [any thread]
class CabinetList {
 public:
  void Append(std::uint32_t cabinet) {
    const MutexGuard guard(lock_);
    cabinets_.push_back(cabinet);
  }

  std::vector<std::uint32_t> Copy() const {
    const MutexGuard guard(lock_);
    return cabinets_;
  }

 private:
  mutable Mutex lock_;
  std::vector<std::uint32_t> cabinets_ EM_GUARDED_BY(lock_);
};

}  // namespace emstatus
