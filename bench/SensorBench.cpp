#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/Benchmarks.h"
#include "host/providers/RealFiles.h"

namespace emstatus::bench {
namespace {

/// An attribute that every Linux has, and one that costs the kernel next to nothing.
constexpr const char* kAttribute = "/sys/devices/system/cpu/possible";

using Text = std::array<char, host::SystemFiles::kAttributeBytes>;

void Kept(benchmark::State& state) {
  const int file = open(kAttribute, O_RDONLY | O_CLOEXEC);
  Text text{};
  for (auto _ : state) {
    if (pread(file, text.data(), text.size(), 0) <= 0) {
      state.SkipWithError("cannot be read");
    }
  }
  close(file);
}

void Provided(benchmark::State& state) {
  host::RealFiles files;
  const std::string path = kAttribute;
  for (auto _ : state) {
    if (!files.ReadAttribute(path)) {
      state.SkipWithError("cannot be read");
    }
  }
}

void Opened(benchmark::State& state) {
  Text text{};
  for (auto _ : state) {
    const int file = open(kAttribute, O_RDONLY | O_CLOEXEC);
    if (read(file, text.data(), text.size()) <= 0) {
      state.SkipWithError("cannot be read");
    }
    close(file);
  }
}

void Streamed(benchmark::State& state) {
  for (auto _ : state) {
    std::ifstream stream(kAttribute);
    std::string line;
    if (!std::getline(stream, line)) {
      state.SkipWithError("cannot be read");
    }
  }
}

}  // namespace

void RegisterSensor() {
  benchmark::RegisterBenchmark("sensor read/pread, kept descriptor", Kept);
  benchmark::RegisterBenchmark("sensor read/RealFiles::ReadAttribute", Provided);
  benchmark::RegisterBenchmark("sensor read/open, read, close", Opened);
  benchmark::RegisterBenchmark("sensor read/std::ifstream", Streamed);
}

}  // namespace emstatus::bench
