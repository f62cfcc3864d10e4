#include "tests/platform/SecondSink.h"

#include <cstdio>
#include <utility>

#include <emstatus/TraceSink.h>

namespace {

std::vector<std::string> lines;

void Keep(const char* way, const char* format, va_list arguments, const char* moduleName) {
  char text[256];
  std::vsnprintf(text, sizeof text, format, arguments);
  lines.push_back(std::string(way) + " " + moduleName + ": " + text);
}

class Sink final : public emstatus::TraceSink {
 public:
  bool IsSink() override { return true; }
  void Print(const char* format, va_list arguments, const char* moduleName) override {
    Keep("print", format, arguments, moduleName);
  }
  void FilteredPrint(const char* format, va_list arguments, const char* moduleName) override {
    Keep("filtered", format, arguments, moduleName);
  }
};

}  // namespace

// Protected: the program has another "Debug", which must not become this one.
extern "C" __attribute__((visibility("protected"))) Sink Debug;
Sink Debug;

namespace emstatus::test {

__attribute__((visibility("default"))) std::vector<std::string> TakeFromSecondSink() {
  return std::exchange(lines, {});
}

}  // namespace emstatus::test
