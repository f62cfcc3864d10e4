#include "host/providers/ErrorHistory.h"

#include <gtest/gtest.h>

#include "host/providers/EdacProvider.h"
#include "tests/host/providers/MachineFolder.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

using namespace host;

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kNow = 500'000 * kHour;

TEST(ErrorHistory, CountsWhatIsNewWithinADay) {
  ErrorHistory history;
  history.Update({10, 1, kNow - 100}, kNow);
  EXPECT_EQ(history.CorrectedPerDay(kNow), 10u) << "a young counter tells recent errors";
  EXPECT_EQ(history.NewUncorrected(kNow), 1u);
  history.Update({15, 1, kNow - 100}, kNow + kHour);
  EXPECT_EQ(history.CorrectedPerDay(kNow + kHour), 15u);
  EXPECT_EQ(history.CorrectedPerDay(kNow + 25 * kHour), 5u);
  EXPECT_EQ(history.CorrectedPerDay(kNow + 26 * kHour), 0u);
  EXPECT_EQ(history.NewUncorrected(kNow + 26 * kHour), 0u);
  EXPECT_EQ(history.Uncorrected(), 1u) << "nobody has confirmed it";
  history.Confirm();
  history.Update({15, 1, kNow - 100}, kNow + 2 * kHour);
  EXPECT_EQ(history.CorrectedPerDay(kNow + 2 * kHour), 0u);
  EXPECT_EQ(history.Uncorrected(), 0u);
}

TEST(ErrorHistory, CountersBeginAnewWithTheirDriver) {
  const struct {
    ErrorHistory::Counters before, after;
    std::uint64_t corrected, uncorrected;
  } rows[] = {
      {{40, 0, {}}, {45, 0, {}}, 5, 0},
      {{40, 0, {}}, {4, 0, {}}, 4, 0},
      {{40, 2, {}}, {41, 1, {}}, 41, 1},
      // The same numbers, but of a driver that was loaded since.
      {{40, 1, kNow - 900}, {40, 1, kNow + 1800}, 40, 1},
      {{40, 1, kNow - 900}, {40, 1, kNow - 898}, 0, 0},
  };
  for (const auto& row : rows) {
    ErrorHistory history;
    history.Update(row.before, kNow);
    history.Confirm();
    history.Update(row.after, kNow + kHour);
    EXPECT_EQ(history.CorrectedPerDay(kNow + kHour), row.corrected);
    EXPECT_EQ(history.Uncorrected(), row.uncorrected);
  }
}

TEST(ErrorHistory, ALongTimeUnwatchedCountsByItsDailyShare) {
  ErrorHistory history;
  history.Update({1000, 0, kNow - 10 * 24 * kHour}, kNow);
  EXPECT_EQ(history.CorrectedPerDay(kNow), 100u);
  auto later = ErrorHistory::FromText(history.Text());
  ASSERT_TRUE(later);
  later->Update({1400, 0, kNow - 10 * 24 * kHour}, kNow + 4 * 24 * kHour);
  EXPECT_EQ(later->CorrectedPerDay(kNow + 4 * 24 * kHour), 100u);
}

TEST(ErrorHistory, TextGivesItBackAndRubbishNothing) {
  ErrorHistory history;
  history.Update({7, 1, {}}, kNow);
  history.Update({9, 1, {}}, kNow + kHour);
  const auto again = ErrorHistory::FromText(history.Text());
  ASSERT_TRUE(again);
  EXPECT_EQ(again->Text(), history.Text());
  EXPECT_EQ(again->CorrectedPerDay(kNow + kHour), 9u);
  for (const char* bad :
       {"", "1 2 3", "1 2 - 4 5 6", "a 0 - 1 - -", "1 0 - 1 5:x, -", "1 0 x 1 - -", "1 0 - 1 - - -"}) {
    EXPECT_FALSE(ErrorHistory::FromText(bad)) << bad;
  }
}

MachineFolder::FileTable Dimm(const std::string& number, const char* corrected, const char* uncorrected) {
  const std::string folder = "/sys/devices/system/edac/mc/mc0/dimm" + number;
  return {{folder + "/dimm_ce_count", corrected},
          {folder + "/dimm_ue_count", uncorrected},
          {folder + "/dimm_label", "CPU_A" + number + "\n"}};
}

TEST(EdacProvider, ModulesAndWhatIsKeptOverRestarts) {
  MachineFolder machine;
  TemporaryDirectory state;
  const std::string folder = state.File("kept");
  EdacProvider none(machine.Files(), folder);
  EXPECT_TRUE(ReadAt(none, 0).empty()) << "no controller, no error";

  machine.Write(Dimm("0", "0", "0"));
  machine.Write(Dimm("1", "40", "0"));
  machine.Write({{"/sys/devices/system/edac/mc/mc0/seconds_since_reset", "600"},
                 {"/sys/devices/system/edac/mc/mc0/ce_noinfo_count", "0"},
                 {"/sys/devices/system/edac/mc/mc0/ue_noinfo_count", "0"}});
  {
    EdacProvider provider(machine.Files(), folder);
    EXPECT_EQ(Lines(ReadAt(provider, 0)), (Texts{"mc0/dimm0 good 0", "mc0/dimm1 good 40", "mc0 good 0"}));
  }
  machine.Write(Dimm("1", "51", "0"));
  machine.Remove("/sys/devices/system/edac/mc/mc0/dimm0");
  machine.Write({{"/sys/devices/system/edac/mc/mc0/seconds_since_reset", "1200"}});
  EdacProvider provider(machine.Files(), folder);
  const auto readings = ReadAt(provider, 600);
  EXPECT_EQ(
      Lines(readings),
      (Texts{
          "mc0/dimm1 warning 51: 51 corrected errors in the last 24 h, at most 50 expected; its failure is "
          "predicted",
          "mc0 good 0", "mc0/dimm0 lost: was there before and is gone"}));
  EXPECT_TRUE(readings[0].customerServiceable);
  EXPECT_EQ(readings[2].name, "CPU_A0");
  EXPECT_TRUE(provider.Confirm(ObjectClass::MemoryModule, "mc0/dimm0"));
  EXPECT_TRUE(provider.Confirm(ObjectClass::MemoryModule, "mc0/dimm1"));
  EXPECT_EQ(Lines(ReadAt(provider, 610)), (Texts{"mc0/dimm1 good 0", "mc0 good 0"}));
  machine.Write(Dimm("1", "51", "1"));
  EXPECT_EQ(Line(ReadAt(provider, 620)[0]),
            "mc0/dimm1 critical 0: 1 uncorrected errors in the last 24 h, 0 expected");
  machine.Write({{"/sys/devices/system/edac/mc/mc0/seconds_since_reset", std::to_string(3600 * 26 + 600)}});
  EXPECT_EQ(Line(ReadAt(provider, 3600 * 26)[0]),
            "mc0/dimm1 warning 0: 1 uncorrected errors more than 24 h ago, not confirmed; 0 expected");
}

TEST(EdacProvider, BadCountersAndAFolderThatCannotBeWritten) {
  MachineFolder machine(Dimm("0", "x", "0"));
  machine.Write(Dimm("1", "0", "0"));
  machine.Write({{"/sys/devices/system/edac/mc/mc1/csrow0/ce_count", "3"},
                 {"/sys/devices/system/edac/mc/mc1/csrow0/ue_count", "0"},
                 {"/sys/devices/system/edac/mc/mc1/csrow0/ch0_dimm_label", "B0"},
                 {"/sys/devices/system/edac/mc/mc2/ce_count", "4"},
                 {"/sys/devices/system/edac/mc/mc2/ue_count", "0"}});
  machine.Fail("/sys/devices/system/edac/mc/mc0/dimm1/dimm_ue_count", 5);
  EdacProvider provider(machine.Files(), "/proc/nowhere");
  const auto lines = Lines(ReadAt(provider, 0));
  const std::string note =
      ": its errors cannot be kept over restarts: /proc/nowhere/memory-errors: No such file or directory";
  EXPECT_EQ(lines, (Texts{"mc0/dimm0 implausible: dimm_ce_count reads \"x\", a number expected",
                          "mc0/dimm1 sensor-fault: cannot be read: dimm_ue_count: Input/output error",
                          "mc1/csrow0 good 3" + note, "mc2 good 4" + note}));
}

}  // namespace
}  // namespace emstatus::test
