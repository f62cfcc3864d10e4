#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace emstatus::bench {

/// Keeps the fastest repetition of each benchmark: what others on the machine take only ever adds. Prints
/// nothing while they run.
class Ratios final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  /// A line for each benchmark: nanoseconds for one thing, and how many times the first variant of its task
  /// this is.
  void Print(std::ostream& out) const;

  /// What failed, or empty.
  const std::string& Failure() const { return failure_; }

 private:
  struct Fastest {
    std::string task;
    std::string variant;
    double nanoseconds = 0;
  };

  /// By the place in the order of registration.
  std::map<std::int64_t, Fastest> fastest_;
  std::string failure_;
};

}  // namespace emstatus::bench
