#include "host/configcheck/Trial.h"

#include <cstdlib>
#include <span>

namespace emstatus::host {
namespace {

/// More parts than a component is likely to count before the one that it asks.
constexpr std::uint32_t kMostParts = 1000;
constexpr std::int32_t kWarningStatus = 2;
constexpr std::int32_t kErrorStatus = 3;

/// A raw value and the reading that gives it.
struct BadState {
  std::int32_t raw;
  Quality quality;
  Condition condition;
};

constexpr BadState kBadStates[] = {
    {2, Quality::Good, Condition::Critical},
    {1, Quality::Good, Condition::Warning},
    {11, Quality::SensorFault, Condition::Good},
    {12, Quality::Implausible, Condition::Good},
};
constexpr BadState kBadQualities[] = {
    {2, Quality::SensorFault, Condition::Good},
    {3, Quality::Implausible, Condition::Good},
};

/// What the map makes of a raw value that is no good one shows as a failure.
bool Shows(const Definition& definition, std::int32_t raw) {
  const Definition::Mapping* mapping = definition.Find(raw);
  return mapping != nullptr && (mapping->value == kWarningStatus || mapping->value == kErrorStatus);
}

bool MakeBad(const Definition& definition, std::span<const BadState> states, Trial& trial) {
  for (const BadState& state : states) {
    if (Shows(definition, state.raw)) {
      trial.bad.quality = state.quality;
      trial.bad.condition = state.condition;
      trial.bad.reason = "tried out";
      return true;
    }
  }
  return false;
}

/// The value goes beyond the limit of the request, while the object's own state stays good.
bool MakeBeyond(const Definition& definition, const RequestElement& request, bool above, Trial& trial) {
  if (!request.data || request.data->type != "int") {
    return false;
  }
  const double limit = static_cast<double>(std::strtoll(request.data->text.c_str(), nullptr, 0));
  trial.good.measurement = Measurement{above ? limit - 1 : limit + 1, Unit::None, {}};
  trial.bad.measurement = Measurement{above ? limit + 1 : limit - 1, Unit::None, {}};
  return Shows(definition, static_cast<std::int32_t>(RawState::Warning));
}

bool MakeStates(const Definition& definition, Question question, Trial& trial) {
  const RequestElement& request = *definition.statusRequest.element;
  switch (question) {
    case Question::State:
      return MakeBad(definition, kBadStates, trial);
    case Question::Quality:
      return MakeBad(definition, kBadQualities, trial);
    case Question::StateAbove:
    case Question::StateBelow:
      return MakeBeyond(definition, request, question == Question::StateAbove, trial);
    default:
      return false;
  }
}

/// Which part is asked first; false when there can be none.
bool FindPart(const Definition& definition, const ClassRow& row, Trial& trial) {
  const RequestElement& request = *definition.statusRequest.element;
  const std::uint32_t object =
      definition.HasNumberedInstances() ? definition.instanceBaseIndex : request.HexNumber("OI").value_or(0);
  if (object >= kFirstNamedObject && object <= kLastNamedObject && request.data) {
    trial.name = request.data->text;
    return !trial.name.empty();
  }
  trial.position = object - row.firstIndex;
  return object >= row.firstIndex && trial.position < kMostParts;
}

}  // namespace

std::optional<Trial> MakeTrial(const Definition& definition, std::string& why) {
  if (!definition.statusRequest.IsDefined()) {
    why = "nothing is asked";
    return std::nullopt;
  }
  const RequestElement& request = *definition.statusRequest.element;
  const ClassRow* row = FindClass(request.HexNumber("OC").value_or(0));
  const auto question = FindQuestion(request.HexNumber("OE").value_or(0));
  if (row == nullptr || !question) {
    why = "emhost does not answer it";
    return std::nullopt;
  }
  Trial trial;
  trial.objectClass = row->objectClass;
  trial.good.objectClass = row->objectClass;
  trial.good.quality = Quality::Good;
  trial.bad = trial.good;
  if (!FindPart(definition, *row, trial)) {
    why = "it asks for a part that cannot be";
    return std::nullopt;
  }
  if (!MakeStates(definition, *question, trial)) {
    why = "no failure makes it a warning or an error";
    return std::nullopt;
  }
  const auto late = *question == Question::Quality ? static_cast<std::int32_t>(Quality::Late)
                                                   : static_cast<std::int32_t>(RawState::Late);
  trial.showsSilence = Shows(definition, late) && row->objectClass != ObjectClass::HealthSource;
  return trial;
}

}  // namespace emstatus::host
