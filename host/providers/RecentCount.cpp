#include "host/providers/RecentCount.h"

namespace emstatus::host {

std::uint64_t RecentCount::Update(const std::optional<std::uint64_t>& count, Clock::time_point now) {
  if (count && last_ && *count > *last_) {
    rises_.emplace_back(now, *count - *last_);
  }
  last_ = count ? count : last_;
  while (!rises_.empty() && now - rises_.front().first >= window_) {
    rises_.pop_front();
  }
  std::uint64_t sum = 0;
  for (const auto& [time, rise] : rises_) {
    sum += rise;
  }
  return sum;
}

}  // namespace emstatus::host
