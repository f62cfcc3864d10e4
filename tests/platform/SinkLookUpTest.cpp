#include <gtest/gtest.h>

#include <emstatus/TraceSink.h>

#include "platform/CDebugClient.h"
#include "tests/platform/SecondSink.h"

// What this program itself has under "Debug" is no sink, at first glance or when asked.
class NoSink final : public emstatus::TraceSink {
 public:
  bool IsSink() override { return false; }
  void Print(const char*, va_list, const char*) override { ADD_FAILURE(); }
  void FilteredPrint(const char*, va_list, const char*) override { ADD_FAILURE(); }
};
extern "C" {
#ifdef EM_DEBUG_IS_A_NUMBER
#ifdef __clang__
// AddressSanitizer would have the symbol as large as the number and its guard zone together.
__attribute__((no_sanitize("address")))
#endif
__attribute__((visibility("default"))) int Debug = 5;
#define EM_CASE TakesTheNextObjectWhenTheFirstIsANumber
#else
__attribute__((visibility("default"))) NoSink Debug;
#define EM_CASE TakesTheNextObjectWhenTheFirstDenies
#endif
}

namespace emstatus::test {
namespace {

TEST(SinkLookUp, EM_CASE) {
  const std::string nowhere = "/nonexistent";
  CDebugClient client("NAME", {.directory = nowhere.c_str()});
  CDebugClient nameless(nullptr, {.directory = nowhere.c_str()});
  client.Print("%d", 1);
  nameless.Print(9, "%d", 2);
  setenv("QX_LOG_DEBUG_LEVEL", "1", 1);
  client.Init("RENAMED");
  client.Trace(1, "%d", 3);
  client.Trace(2, "%d", 4);
  const std::vector<std::string> expected = {"print NAME: 1", "print : 2", "filtered RENAMED: 3"};
  EXPECT_EQ(TakeFromSecondSink(), expected);
}

}  // namespace
}  // namespace emstatus::test
