#include "config/Simulation.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

constexpr const char* kName = "EM_STATUS_simu.ini";
constexpr const char* kHead = "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=1\n[Components]\n";

class SimulationTest : public testing::Test {
 protected:
  SimulationTest() { std::filesystem::current_path(folder_.Path()); }
  ~SimulationTest() override { std::filesystem::current_path("/"); }

  TemporaryDirectory folder_;
  Simulation simulation_;
};

TEST_F(SimulationTest, SetsFieldsAndKeepsWhatItDoesNotKnow) {
  folder_.Write(kName, std::string(kHead) +
                           "A.MappedStatus=259\nA.IsCss=1\nB.ObjectStatus=-7\n.C.IsCss=0\n"
                           "D.Unknown=1\nthree.parts.here=1\nnone=1\n.MappedStatus=1\n");
  ASSERT_TRUE(simulation_.BeginWithFile());
  const auto a = simulation_.Find("A");
  ASSERT_TRUE(a);
  EXPECT_EQ(a->mappedStatus, 3);
  EXPECT_EQ(a->isCss, 1);
  EXPECT_EQ(a->objectStatus, SimulationEntry::kNotSimulated);
  EXPECT_EQ(simulation_.Find("B")->objectStatus, -7);
  EXPECT_EQ(simulation_.Find("C")->isCss, 0);
  const auto d = simulation_.Find("D");
  ASSERT_TRUE(d) << "an unknown keyword still leaves an entry";
  EXPECT_EQ(d->mappedStatus, NoStatus);
  for (const char* name : {"three", "none", "MappedStatus", ""}) EXPECT_FALSE(simulation_.Find(name)) << name;
}

TEST_F(SimulationTest, SwitchFollowsTheFileWhileTheTableIsKept) {
  const struct {
    const char* what;
    std::string file;
    bool read;
    bool on;
  } rows[] = {
      {"no file", "", false, false},
      {"active", std::string(kHead) + "A.MappedStatus=3\n", true, true},
      {"switched off", "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=0\n", true, false},
      {"on again without entries", kHead, true, true},
      {"another file", "[Info]\nFilename=other.ini\n[Config]\nActive=1\n", true, false},
      {"gone", "", false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::filesystem::remove(folder_.Path() / kName);
    if (!row.file.empty()) folder_.Write(kName, row.file);
    EXPECT_EQ(simulation_.ReadSimu(), row.read);
    simulation_.FollowFile();
    EXPECT_EQ(simulation_.Find("A").has_value(), row.on);
  }
}

TEST_F(SimulationTest, AnActiveFileWithoutEntriesIsNotInForce) {
  folder_.Write(kName, kHead);
  EXPECT_FALSE(simulation_.BeginWithFile());
  simulation_.FollowFile();
  EXPECT_FALSE(simulation_.Find("A"));
}

}  // namespace
}  // namespace emstatus::test
