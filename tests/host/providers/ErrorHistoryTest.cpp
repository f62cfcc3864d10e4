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

// What counters show at `now` that began to count at `since`.
ErrorHistory::Counters Since(std::int64_t since, std::int64_t now, std::uint64_t corrected,
                             std::uint64_t uncorrected) {
  return {corrected, uncorrected, now - since, since, "boot"};
}

TEST(ErrorHistory, CountsWhatIsNewWithinADay) {
  ErrorHistory history;
  history.Update(Since(kNow - 100, kNow, 10, 1), kNow);
  EXPECT_EQ(history.CorrectedPerDay(kNow), 10u) << "a young counter tells recent errors";
  EXPECT_EQ(history.NewUncorrected(kNow), 1u);
  history.Update(Since(kNow - 100, kNow + kHour, 15, 1), kNow + kHour);
  EXPECT_EQ(history.CorrectedPerDay(kNow + kHour), 15u);
  EXPECT_EQ(history.CorrectedPerDay(kNow + 25 * kHour), 5u);
  EXPECT_EQ(history.CorrectedPerDay(kNow + 26 * kHour), 0u);
  EXPECT_EQ(history.NewUncorrected(kNow + 26 * kHour), 0u);
  EXPECT_EQ(history.Uncorrected(), 1u) << "nobody has confirmed it";
  history.Confirm();
  history.Update(Since(kNow - 100, kNow + 2 * kHour, 15, 1), kNow + 2 * kHour);
  EXPECT_EQ(history.CorrectedPerDay(kNow + 2 * kHour), 0u);
  EXPECT_EQ(history.Uncorrected(), 0u);
}

TEST(ErrorHistory, CountersBeginAnewWithTheirDriverOrTheMachine) {
  const struct {
    ErrorHistory::Counters before, after;
    std::uint64_t corrected, uncorrected, rise;
  } rows[] = {
      {{40, 0}, {45, 0}, 5, 0, 5},
      {{40, 0}, {4, 0}, 4, 0, 4},
      {{40, 2}, {41, 1}, 41, 1, 42},
      // The same numbers, but of a driver that was loaded since, and of a machine that was started since.
      {{40, 1, 900, 100}, {40, 1, 1800, 2800}, 40, 1, 41},
      {{40, 1, 900, 100}, {40, 1, 4500, 102}, 0, 0, 0},
      {{40, 1, 900, 100, "a"}, {45, 1, 900, 100, "b"}, 45, 1, 46},
      {{40, 1, {}, {}, "a"}, {45, 1, {}, {}, "b"}, 45, 1, 46},
      {{40, 1, {}, {}, ""}, {45, 1, {}, {}, "b"}, 5, 0, 5},
  };
  for (const auto& row : rows) {
    ErrorHistory history;
    history.Update(row.before, kNow);
    EXPECT_EQ(history.LastRise(), 0u);
    history.Confirm();
    history.Update(row.after, kNow + kHour);
    EXPECT_EQ(history.CorrectedPerDay(kNow + kHour), row.corrected);
    EXPECT_EQ(history.Uncorrected(), row.uncorrected);
    EXPECT_EQ(history.LastRise(), row.rise);
  }
}

TEST(ErrorHistory, AClockThatIsSetMovesWhatWasSeen) {
  for (const std::int64_t step : {50 * 365 * 24 * kHour, -50 * 365 * 24 * kHour, -2 * kHour}) {
    ErrorHistory history;
    history.Update({60, 1}, kNow);
    history.MoveClock(step);
    history.Update({70, 1}, kNow + step + 10);
    EXPECT_EQ(history.CorrectedPerDay(kNow + step + 10), 70u) << step;
    EXPECT_EQ(history.NewUncorrected(kNow + step + 10), 1u);
    EXPECT_EQ(history.CorrectedPerDay(kNow + step + 25 * kHour), 0u);
  }
  ErrorHistory setWhileAway;
  setWhileAway.Update({60, 1}, kNow);
  const std::int64_t now = kNow - 50 * 365 * 24 * kHour;
  setWhileAway.Update({60, 1}, now);
  EXPECT_EQ(setWhileAway.CorrectedPerDay(now + 25 * kHour), 0u) << "not for the next fifty years";
}

TEST(ErrorHistory, ALongTimeUnwatchedCountsByItsDailyShare) {
  ErrorHistory history;
  history.Update(Since(kNow - 10 * 24 * kHour, kNow, 1000, 0), kNow);
  EXPECT_EQ(history.CorrectedPerDay(kNow), 100u);
  auto later = ErrorHistory::FromText(history.Text());
  ASSERT_TRUE(later);
  later->Update(Since(kNow - 10 * 24 * kHour, kNow + 4 * 24 * kHour, 1400, 0), kNow + 4 * 24 * kHour);
  EXPECT_EQ(later->CorrectedPerDay(kNow + 4 * 24 * kHour), 100u);
}

TEST(ErrorHistory, TextGivesItBackAndRubbishNothing) {
  ErrorHistory history;
  history.Update({7, 1, {}, 5, "boot"}, kNow);
  history.Update({9, 1, {}, 5, "boot"}, kNow + kHour);
  const auto again = ErrorHistory::FromText(history.Text());
  ASSERT_TRUE(again);
  EXPECT_EQ(again->Text(), history.Text());
  EXPECT_EQ(again->CorrectedPerDay(kNow + kHour), 9u);
  for (const char* bad : {"", "1 2 3", "1 2 b - 4 5 6", "a 0 b - 1 - -", "1 0 b - 1 5:x, -", "1 0 b x 1 - -",
                          "1 0 b - 1 - - -"}) {
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
  EdacProvider none(machine.Factory(), folder, kPatient);
  EXPECT_TRUE(ReadAt(none, 0).empty()) << "no controller, no error";

  machine.Write(Dimm("0", "0", "0"));
  machine.Write(Dimm("1", "40", "0"));
  machine.Write({{"/sys/devices/system/edac/mc/mc0/seconds_since_reset", "600"},
                 {"/sys/devices/system/edac/mc/mc0/ce_noinfo_count", "0"},
                 {"/sys/devices/system/edac/mc/mc0/ue_noinfo_count", "0"}});
  {
    EdacProvider provider(machine.Factory(), folder, kPatient);
    EXPECT_EQ(Lines(ReadAt(provider, 0)),
              (Texts{"mc0/dimm0 good 0",
                     "mc0/dimm1 good 40: 40 corrected errors in the last 24 h, at most 50 expected",
                     "mc0 good 0"}));
  }
  machine.Write(Dimm("1", "51", "0"));
  machine.Remove("/sys/devices/system/edac/mc/mc0/dimm0");
  machine.Write({{"/sys/devices/system/edac/mc/mc0/seconds_since_reset", "1200"}});
  EdacProvider provider(machine.Factory(), folder, kPatient);
  const auto readings = ReadAt(provider, 600);
  EXPECT_EQ(
      Lines(readings),
      (Texts{
          "mc0/dimm1 warning 51: 51 corrected errors in the last 24 h, at most 50 expected; its failure is "
          "predicted; 11 new since the last read",
          "mc0 good 0", "mc0/dimm0 lost: was there before and is gone"}));
  EXPECT_TRUE(readings[0].customerServiceable);
  EXPECT_EQ(readings[2].name, "CPU_A0");
  EXPECT_TRUE(provider.Confirm(ObjectClass::MemoryModule, "mc0/dimm0"));
  EXPECT_TRUE(provider.Confirm(ObjectClass::MemoryModule, "mc0/dimm1"));
  EXPECT_EQ(Lines(ReadAt(provider, 610)), (Texts{"mc0/dimm1 good 0", "mc0 good 0"}));
  machine.Write(Dimm("1", "51", "1"));
  EXPECT_EQ(
      Line(ReadAt(provider, 620)[0]),
      "mc0/dimm1 critical 0: 1 uncorrected errors in the last 24 h, 0 expected; 1 new since the last read");
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
  EdacProvider provider(machine.Factory(), "/proc/nowhere", kPatient);
  const auto lines = Lines(ReadAt(provider, 0));
  const std::string note =
      "its errors cannot be kept over restarts: /proc/nowhere/memory-errors: No such file or directory";
  EXPECT_EQ(lines,
            (Texts{"mc0/dimm0 implausible: dimm_ce_count reads \"x\", a number expected",
                   "mc0/dimm1 sensor-fault: cannot be read: dimm_ue_count: Input/output error",
                   "mc1/csrow0 good 3: 3 corrected errors in the last 24 h, at most 50 expected; " + note,
                   "mc2 good 4: 4 corrected errors in the last 24 h, at most 50 expected; " + note}));
}

TEST(EdacProvider, ADriverThatIsGoneIsMissedOverRestarts) {
  MachineFolder machine(Dimm("0", "0", "0"));
  TemporaryDirectory state;
  {
    EdacProvider provider(machine.Factory(), state.Path(), kPatient);
    EXPECT_EQ(Lines(ReadAt(provider, 0)), (Texts{"mc0/dimm0 good 0"}));
  }
  machine.Remove("/sys/devices/system/edac");
  EdacProvider provider(machine.Factory(), state.Path(), kPatient);
  const auto readings = ReadAt(provider, 10);
  EXPECT_EQ(Lines(readings), (Texts{"mc0/dimm0 lost: was there before and is gone with its controller"}));
  EXPECT_TRUE(readings[0].mayGo) << "or it would stay lost when it is confirmed";
  EXPECT_TRUE(provider.Confirm(ObjectClass::MemoryModule, "mc0/dimm0"));
  EXPECT_TRUE(ReadAt(provider, 20).empty());
}

TEST(EdacProvider, ABrokenStateFileIsToldAndReplaced) {
  MachineFolder machine(Dimm("0", "0", "0"));
  TemporaryDirectory state;
  const std::string path = state.File("memory-errors");
  for (const auto& [text, problem] :
       {std::pair("no tab\n", ": line 1 is no entry"),
        std::pair("mc0/dimm0\t1 2 x|A\n", ": what is kept of mc0/dimm0 is not understood")}) {
    state.Write("memory-errors", text);
    EdacProvider provider(machine.Factory(), state.Path(), kPatient);
    EXPECT_EQ(Lines(ReadAt(provider, 0)),
              (Texts{"mc0/dimm0 good 0: earlier errors may be forgotten: " + path + problem}));
    EXPECT_TRUE(provider.Confirm(ObjectClass::MemoryModule, "mc0/dimm0"));
    EXPECT_EQ(Lines(ReadAt(provider, 10)), (Texts{"mc0/dimm0 good 0"}));
    EdacProvider later(machine.Factory(), state.Path(), kPatient);
    EXPECT_EQ(Lines(ReadAt(later, 20)), (Texts{"mc0/dimm0 good 0"}));
  }
}

TEST(EdacProvider, AControllerThatHangsIsLateAloneAndRanksAreModules) {
  MachineFolder machine(Dimm("0", "0", "0"));
  machine.Write({{"/sys/devices/system/edac/mc/mc1/rank3/dimm_ce_count", "0"},
                 {"/sys/devices/system/edac/mc/mc1/rank3/dimm_ue_count", "0"},
                 {"/sys/devices/system/edac/mc/mc1/rank3/dimm_location", "csrow 1 channel 1"},
                 {"/sys/devices/system/edac/mc/mc2/ce_count", "0"}});
  machine.Hang("/sys/devices/system/edac/mc/mc2/ce_count");
  EdacProvider provider(machine.Factory(), "", kImpatient);
  const std::string late = " late: no answer for 40 s; the device or its driver may hang";
  Texts expected = {"mc0/dimm0 good 0", "mc1/rank3 good 0",
                    "mc2 late: no answer for 0 s; the device or its driver may hang"};
  EXPECT_EQ(ReadUntil(provider, 0, expected), expected);
  EXPECT_EQ(ReadAt(provider, 5)[1].name, "mc1/rank3 (csrow 1 channel 1)");
  machine.Hang("/sys/devices/system/edac/mc/mc0/dimm0/dimm_ce_count");
  ReadAt(provider, 10);
  expected = {"mc0/dimm0" + late, "mc1/rank3 good 0", "mc2" + late};
  const Texts told = ReadUntil(provider, 40, expected);
  EXPECT_EQ(told[1], expected[1]);
  EXPECT_EQ(told[2], expected[2]);
  EXPECT_TRUE(told[0].starts_with("mc0/dimm0 late: no answer for ")) << told[0];
}

}  // namespace
}  // namespace emstatus::test
