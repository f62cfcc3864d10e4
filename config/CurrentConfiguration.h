#pragma once

#include <memory>

#include "config/StatusConfiguration.h"
#include "platform/Mutex.h"
#include "platform/ThreadSafety.h"

namespace emstatus {

/// The configuration in force. Never null; what was got stays valid and unchanged while it is held. [any
/// thread]
class CurrentConfiguration {
 public:
  std::shared_ptr<const StatusConfiguration> Get() const {
    const MutexGuard guard(lock_);
    return configuration_;
  }

  void Replace(StatusConfiguration configuration) {
    auto replacement = std::make_shared<const StatusConfiguration>(std::move(configuration));
    const MutexGuard guard(lock_);
    configuration_.swap(replacement);
  }

 private:
  mutable Mutex lock_;
  std::shared_ptr<const StatusConfiguration> configuration_ EM_GUARDED_BY(lock_) =
      std::make_shared<const StatusConfiguration>();
};

}  // namespace emstatus
