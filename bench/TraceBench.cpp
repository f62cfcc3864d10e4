#include <cstdlib>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/Benchmarks.h"
#include "platform/CDebugClient.h"

namespace emstatus::bench {
namespace {

constexpr int kLines = 1000;

/// Keeps the loops from being unrolled into each other.
template <typename Line>
void Loop(benchmark::State& state, const Line& line) {
  for (auto _ : state) {
    for (int number = 0; number < kLines; ++number) {
      benchmark::DoNotOptimize(number);
      line(number);
    }
  }
  state.SetItemsProcessed(state.iterations() * kLines);
}

void TraceNumber(int number) {
  EM_TRACE(5, "\nEM_STATUS (QUERY)   : line %d of %s", number, std::string("the trace").c_str());
}

void Empty(benchmark::State& state) {
  Loop(state, [](int) {});
}

void Off(benchmark::State& state) {
  unsetenv("QX_LOG_DEBUG_LEVEL");
  debugClient.Init("EM_STATUS");
  Loop(state, TraceNumber);
}

void BelowLevel(benchmark::State& state) {
  setenv("QX_LOG_DEBUG_LEVEL", "4", 1);
  debugClient.Init("EM_STATUS");
  Loop(state, TraceNumber);
  unsetenv("QX_LOG_DEBUG_LEVEL");
  debugClient.Init("EM_STATUS");
}

}  // namespace

void RegisterTrace() {
  benchmark::RegisterBenchmark("trace line that is not written/empty loop", Empty);
  benchmark::RegisterBenchmark("trace line that is not written/EM_TRACE, tracing is off", Off);
  benchmark::RegisterBenchmark("trace line that is not written/EM_TRACE below its level", BelowLevel);
}

}  // namespace emstatus::bench
