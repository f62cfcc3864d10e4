#include <exception>
#include <iostream>

#include "bench/Benchmarks.h"
#include "bench/Ratios.h"

int main(int argc, char** argv) {
  using namespace emstatus::bench;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  try {
    RegisterProfile();
    RegisterExport();
    RegisterTrace();
    RegisterNodeQuery();
    RegisterSensor();
    RegisterScan();
    Ratios ratios;
    if (benchmark::RunSpecifiedBenchmarks(&ratios) == 0 || !ratios.Failure().empty()) {
      std::cerr << "bench: " << (ratios.Failure().empty() ? "nothing was run" : ratios.Failure()) << "\n";
      return 1;
    }
    ratios.Print(std::cout);
  } catch (const std::exception& error) {
    std::cerr << "bench: " << error.what() << "\n";
    return 1;
  }
  return 0;
}
