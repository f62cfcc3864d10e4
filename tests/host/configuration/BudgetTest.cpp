#include <gtest/gtest.h>

#include <algorithm>

#include "host/configcheck/BudgetText.h"
#include "host/configcheck/SourceRhythm.h"
#include "host/machine/Numbering.h"
#include "host/providers/DiskProvider.h"
#include "host/providers/LinuxProviders.h"

namespace emstatus::host {
namespace {

using std::chrono::milliseconds;

TEST(SourceRhythm, IsThatOfTheProviders) {
  LinuxOptions options;
  options.requiredProcesses = {"any"};
  const auto providers = MakeLinuxProviders(options);
  EXPECT_GT(providers.size(), 14U);
  for (const auto& provider : providers) {
    const auto rows = SourceRhythms();
    const auto row = std::ranges::find(rows, provider->Name(), &SourceRhythm::name);
    ASSERT_NE(row, rows.end()) << provider->Name();
    EXPECT_EQ(milliseconds(row->interval), provider->Interval()) << row->name;
    EXPECT_EQ(milliseconds(row->lateAfter), provider->LateAfter()) << row->name;
  }
  EXPECT_EQ(RhythmOfClass(ObjectClass::Disk).interval, kSmartInterval);
  for (const ClassRow& row : Classes()) {
    EXPECT_NE(RhythmOfClass(row.objectClass).interval.count(), 0) << row.word;
  }
  EXPECT_EQ(RhythmOfClass(ObjectClass::Temperature).sources, "sensors, power supplies");
  EXPECT_EQ(RhythmOfClass(ObjectClass::Temperature).interval, std::chrono::seconds(10));
}

std::string Section(const std::string& name, const std::string& keys, const char* code,
                    const char* extension) {
  return "[Component." + name + "]\nDisplayName=" + name + "\n" + keys +
         "StatusRequest=<CMD Context=\"TRIQ\" OC=\"" + code + "\" OE=\"" + extension +
         "\"><DATA Type=\"int\">9</DATA></CMD>\nStatus.Good=OK 0\n";
}

std::string Budgets(const std::string& cycles) {
  const std::string text =
      "[Configuration]\nPollingRateSeconds=10\nAdvancedPollingCycles=" + cycles +
      "\n[StatusMapping]\nOK=1\n" +
      "[System]\nSubsystems=S\n[Subsystem.S]\nDisplayName=S\nComponents=Fan Must Swap Idle Other Fan\n" +
      Section("Fan", "", "0102", "0002") + Section("Fan.alt", "", "0502", "0002") +
      Section("Must", "Category=Mandatory\n", "0102", "0002") + Section("Swap", "", "0403", "000D") +
      Section("Idle", "Category=Inactive\n", "0801", "0002") + Section("Other", "", "4711", "0002");
  return BudgetText(DetectionBudgets(ReadConfiguration(IniFile(text))));
}

TEST(DetectionBudget, FollowsFromRhythmsAndScans) {
  EXPECT_EQ(Budgets("5"),
            "component  source                      read every  fault     silence   after inactive\n"
            "Fan        sensors                     5.0 s       6.1 s     26.0 s    60.0 s\n"
            "Fan.alt    nvme sensors, sata sensors  10.0 min    10.0 min  30.2 min  10.9 min\n"
            "Must       sensors                     5.0 s       6.1 s     26.0 s    6.1 s\n"
            "Swap       memory                      2.0 s       13.0 s    17.0 s    57.0 s\n"
            "Idle       processes                   5.0 s       6.1 s     26.0 s    60.0 s\n"
            "Other      not of emhost               -           -         -         -\n");
  const std::string start = "[Configuration]\nInitialPollingDelaySeconds=20\nAdvancedPollingRateSeconds=4\n";
  const auto judged = [&](const char* more) {
    return UntilSilenceIsJudged(ReadConfiguration(IniFile(start + more))).count();
  };
  EXPECT_EQ(judged("AdvancedPollingCycles=5\n"), 20000 + 4 * 4500 + 500);
  EXPECT_EQ(judged("AdvancedPollingCycles=0\n"), 20500);
  // Without cycles nothing becomes inactive, and what begins so is never asked.
  const std::string without = Budgets("0");
  EXPECT_NE(without.find("Fan        sensors                     5.0 s       6.1 s     26.0 s    6.1 s\n"),
            std::string::npos)
      << without;
  EXPECT_NE(without.find("Idle       not of emhost               -           -         -         -\n"),
            std::string::npos)
      << without;
}

TEST(DetectionBudget, JsonSaysWhatIsNotKnown) {
  const auto json =
      BudgetJson({{.component = "A", .sources = "", .isTold = true, .fault = milliseconds(6100)}});
  EXPECT_EQ(json.at(0).at("FaultSeconds"), 6.1);
  EXPECT_EQ(json.at(0).at("SilenceSeconds"), nullptr);
}

}  // namespace
}  // namespace emstatus::host
