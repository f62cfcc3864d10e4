#include "host/configcheck/DetectionBudget.h"

#include <algorithm>
#include <cstdint>

#include "host/configcheck/SourceRhythm.h"
#include "host/machine/Numbering.h"

namespace emstatus::host {
namespace {

using Milliseconds = DetectionBudget::Duration;

/// After a wake-up, the module waits for more of them.
constexpr Milliseconds kSettleTime{100};
/// What a scan may take: emhost answers from its table.
constexpr Milliseconds kLongestScan{500};

/// The module counts milliseconds in 32 bits.
Milliseconds PauseOf(std::int32_t seconds) {
  return Milliseconds(static_cast<std::uint32_t>(seconds) * 1000U);
}

/// Whether an answer that becomes a worse one is always another raw state of the object, of which the module
/// is told.
bool IsRawState(Question question) {
  return question == Question::State || question == Question::Quality || question == Question::Redundancy;
}

void AddTimes(const Configuration& configuration, const Definition& definition, ObjectClass objectClass,
              DetectionBudget& budget) {
  const ClassRhythm rhythm = RhythmOfClass(objectClass);
  const Milliseconds untilRegular = UntilRegularScan(configuration);
  budget.sources = rhythm.sources;
  budget.readEvery = rhythm.interval;
  budget.lateAfter = rhythm.lateAfter;
  // The scan that runs has already asked for the part.
  budget.inModule = budget.isTold ? kLongestScan + kSettleTime + kLongestScan : untilRegular;
  budget.fault = budget.readEvery + *budget.inModule;
  budget.silence = budget.lateAfter + untilRegular;
  const auto cycles = static_cast<std::uint32_t>(configuration.advancedPollingCycles);
  if (definition.category == Category::Mandatory) {
    budget.wasInactive = budget.fault;
  } else if (cycles != 0) {
    budget.wasInactive = budget.readEvery + cycles * untilRegular;
  } else if (definition.category != Category::Inactive) {
    budget.wasInactive = budget.fault;
  }
}

DetectionBudget BudgetOf(const Configuration& configuration, const Definition& definition) {
  DetectionBudget budget;
  budget.component = definition.name;
  if (!definition.statusRequest.IsDefined()) {
    return budget;
  }
  const RequestElement& request = *definition.statusRequest.element;
  const ClassRow* row = FindClass(request.HexNumber("OC").value_or(0));
  const auto question = FindQuestion(request.HexNumber("OE").value_or(0));
  const bool isNeverAsked =
      definition.category == Category::Inactive && configuration.advancedPollingCycles == 0;
  if (row != nullptr && question && definition.context == "TRIQ" && !isNeverAsked) {
    budget.isTold = IsRawState(*question);
    AddTimes(configuration, definition, row->objectClass, budget);
  }
  return budget;
}

}  // namespace

Milliseconds LongestPause(const Configuration& configuration) {
  return PauseOf(configuration.pollingRate);
}

Milliseconds UntilRegularScan(const Configuration& configuration) {
  return kLongestScan + LongestPause(configuration) + kLongestScan;
}

Milliseconds UntilSilenceIsJudged(const Configuration& configuration) {
  const auto cycles = static_cast<std::uint32_t>(configuration.advancedPollingCycles);
  const std::uint32_t probing = cycles == 0 ? 0 : cycles - 1;
  return PauseOf(configuration.initialPollingDelay) +
         probing * (kLongestScan + PauseOf(configuration.advancedPollingRate)) + kLongestScan;
}

std::vector<DetectionBudget> DetectionBudgets(const Configuration& configuration) {
  std::vector<DetectionBudget> budgets;
  for (const ConfiguredSubsystem& subsystem : configuration.subsystems) {
    for (const std::string& name : subsystem.components) {
      for (const std::string& each : {name, name + ".alt"}) {
        const Definition* definition = configuration.FindComponent(each);
        const bool isKnown = std::ranges::find(budgets, each, &DetectionBudget::component) != budgets.end();
        if (definition != nullptr && !isKnown) {
          budgets.push_back(BudgetOf(configuration, *definition));
        }
      }
    }
  }
  return budgets;
}

}  // namespace emstatus::host
