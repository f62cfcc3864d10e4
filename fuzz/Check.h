#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// Ends the program with a message when `condition` does not hold; the input is a finding then.
#define EM_FUZZ_CHECK(condition) \
  ((condition) ? static_cast<void>(0) : ::emstatus::fuzz::Fail(__FILE__, __LINE__, #condition))

namespace emstatus::fuzz {

[[noreturn]] inline void Fail(const char* file, int line, const char* condition) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

}  // namespace emstatus::fuzz

/// What every target defines: one execution. Always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
