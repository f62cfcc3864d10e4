#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>

namespace emstatus::host {

/// How far one of the kernel's counters has risen within the last while. What it showed at first was counted
/// before anybody looked; one that falls has begun anew. [one thread]
class RecentCount {
 public:
  using Clock = std::chrono::steady_clock;

  /// `window`: the while.
  explicit RecentCount(std::chrono::seconds window) : window_(window) {}

  /// Takes in what the counter shows at `now`, absent where it could not be read; tells its recent rise.
  std::uint64_t Update(const std::optional<std::uint64_t>& count, Clock::time_point now);

 private:
  std::chrono::seconds window_;
  std::optional<std::uint64_t> last_;
  std::deque<std::pair<Clock::time_point, std::uint64_t>> rises_;
};

}  // namespace emstatus::host
