#include "bench/Ratios.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

namespace emstatus::bench {
namespace {

constexpr double kNanosecondsPerSecond = 1e9;

/// Of the clock by which the benchmark counts.
double NanosecondsForOne(const benchmark::BenchmarkReporter::Run& run) {
  const auto items = run.counters.find("items_per_second");
  if (items != run.counters.end() && items->second.value > 0) {
    return kNanosecondsPerSecond / items->second.value;
  }
  return run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * kNanosecondsPerSecond;
}

}  // namespace

bool Ratios::ReportContext(const Context&) {
  return true;
}

void Ratios::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred) {
      failure_ = run.benchmark_name() + ": " + run.error_message;
      continue;
    }
    if (run.run_type != Run::RT_Iteration) {
      continue;
    }
    const std::string& name = run.run_name.function_name;
    const std::size_t slash = name.find('/');
    const double nanoseconds = NanosecondsForOne(run);
    const auto [known, isNew] = fastest_.try_emplace(
        run.family_index, Fastest{name.substr(0, slash), name.substr(slash + 1), nanoseconds});
    if (!isNew) {
      known->second.nanoseconds = std::min(known->second.nanoseconds, nanoseconds);
    }
  }
}

void Ratios::Print(std::ostream& out) const {
  double first = 0;
  const std::string* task = nullptr;
  for (const auto& [index, row] : fastest_) {
    if (task == nullptr || row.task != *task) {
      task = &row.task;
      first = row.nanoseconds;
      out << "\n" << row.task << "\n";
    }
    out << "  " << std::left << std::setw(44) << row.variant << std::right << std::fixed
        << std::setprecision(1) << std::setw(12) << row.nanoseconds << " ns " << std::setw(10)
        << std::setprecision(2) << row.nanoseconds / first << "\n";
  }
}

}  // namespace emstatus::bench
