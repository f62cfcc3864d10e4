#include "host/providers/Blame.h"

#include <utility>

namespace emstatus::host {

void Blame(Reading& reading, Condition condition, std::string reason, std::string advice) {
  if (condition > reading.condition) {
    reading.condition = condition;
    reading.reason = std::move(reason);
    reading.advice = std::move(advice);
  }
}

}  // namespace emstatus::host
