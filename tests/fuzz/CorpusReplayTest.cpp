// Runs one fuzz target over the inputs of its corpus, without the fuzzer: what the target checks, it ends the
// program for.

#include <errno.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Check.h"
#include "tests/support/TraceCapture.h"
#include "tests/support/TraceLevel.h"

namespace emstatus::test {
namespace {

namespace fs = std::filesystem;

/// The program's name says whose inputs it replays.
std::string Target() {
  return std::string(program_invocation_short_name).substr(std::string_view("test_fuzz_").size());
}

fs::path Corpus() {
  return fs::path(EM_CORPORA) / Target();
}

class CorpusReplayTest : public testing::TestWithParam<std::string> {};

TEST_P(CorpusReplayTest, HoldsWhatTheTargetChecks) {
  const TraceLevel everything(5);
  std::ifstream file(Corpus() / GetParam(), std::ios::binary);
  ASSERT_TRUE(file);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), 0);
  Trace().Take();
}

std::vector<std::string> Inputs() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(Corpus())) names.push_back(entry.path().filename());
  std::ranges::sort(names);
  return names;
}

INSTANTIATE_TEST_SUITE_P(Inputs, CorpusReplayTest, testing::ValuesIn(Inputs()), [](const auto& test) {
  std::string name = Target() + "_" + test.param;
  std::ranges::replace_if(
      name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
});

}  // namespace
}  // namespace emstatus::test
