#include "host/machine/Fault.h"

#include <algorithm>
#include <initializer_list>

namespace emstatus::host {
namespace {

struct FaultRow {
  Fault fault;
  std::string_view word;
  /// What the reading becomes.
  Quality quality;
  Condition condition;
};

constexpr FaultRow kFaults[] = {
    {Fault::Warning, "warning", Quality::Good, Condition::Warning},
    {Fault::Failed, "failed", Quality::Good, Condition::Critical},
    {Fault::FailedTooMany, "failed with too few left", Quality::Good, Condition::Critical},
    {Fault::BeyondLimit, "beyond limit", Quality::Good, Condition::Good},
    {Fault::Late, "late", Quality::Late, Condition::Good},
    {Fault::SensorFault, "sensor fault", Quality::SensorFault, Condition::Good},
    {Fault::Implausible, "implausible", Quality::Implausible, Condition::Good},
    {Fault::Lost, "lost", Quality::Lost, Condition::Good},
    {Fault::NoAnswer, "no answer", Quality::Good, Condition::Good},
};

const FaultRow& FaultRowOf(Fault fault) {
  return *std::ranges::find(kFaults, fault, &FaultRow::fault);
}

/// Whether one failure alone leaves the group enough members, so that too few are another case.
bool Bears(const Reading& reading) {
  return reading.redundancy && reading.redundancy->needed > 0 &&
         reading.redundancy->members > reading.redundancy->needed;
}

}  // namespace

std::string_view WordOf(Fault fault) {
  return FaultRowOf(fault).word;
}

std::vector<Fault> FaultsOf(const Reading& reading, Question question) {
  std::vector<Fault> faults;
  const auto add = [&](std::initializer_list<Fault> more) { faults.insert(faults.end(), more); };
  if (question == Question::State) {
    add({Fault::Warning});
  }
  if (question == Question::State || question == Question::Redundancy) {
    add({Fault::Failed});
    if (Bears(reading)) {
      add({Fault::FailedTooMany});
    }
  }
  const bool againstLimit = question == Question::StateAbove || question == Question::StateBelow;
  if (againstLimit) {
    add({Fault::BeyondLimit});
  }
  if (question == Question::State || question == Question::Quality || question == Question::Value ||
      againstLimit) {
    add({Fault::Late, Fault::SensorFault, Fault::Implausible, Fault::Lost});
  }
  add({Fault::NoAnswer});
  return faults;
}

Reading WithFault(Reading reading, Fault fault) {
  const FaultRow& row = FaultRowOf(fault);
  reading.quality = row.quality;
  reading.condition = row.condition;
  reading.reason = row.word;
  if (reading.quality != Quality::Good) {
    reading.measurement.reset();
  }
  return reading;
}

}  // namespace emstatus::host
