#include "host/machine/ReadingAnswer.h"

#include <cmath>
#include <limits>

#include "host/machine/ReadingText.h"

namespace emstatus::host {
namespace {

constexpr double kThousandths = 1000.0;

/// The module reads 32 bits; a value beyond them is answered as none, never wrapped.
Answer ValueAnswer(const Reading& reading) {
  if (reading.quality != Quality::Good || !reading.measurement) {
    return Answer::Refusal(AnswerStatus::Failed);
  }
  const double thousandths = std::round(reading.measurement->value * kThousandths);
  if (!(std::fabs(thousandths) <= std::numeric_limits<std::int32_t>::max())) {
    return Answer::Refusal(AnswerStatus::Failed);
  }
  return Answer::Of(std::int64_t(thousandths));
}

/// The state against a limit that the configuration gives, in whole units.
Answer AgainstLimit(const Reading& reading, const std::optional<nlohmann::json>& data, bool above) {
  if (!data || !data->is_number()) {
    return Answer::Refusal(AnswerStatus::NotSupported);
  }
  if (reading.quality != Quality::Good) {
    return Answer::Of(std::uint32_t(RawStateOf(reading)));
  }
  if (!reading.measurement) {
    return Answer::Refusal(AnswerStatus::Failed);
  }
  const double limit = data->get<double>();
  const double value = reading.measurement->value;
  const bool broken = above ? value > limit : value < limit;
  return Answer::Of(std::uint32_t(broken ? RawState::Warning : RawState::Good));
}

std::string ReadingText(const Reading& reading) {
  return reading.quality == Quality::Good && reading.measurement
             ? NumberText(reading.measurement->value, reading.measurement->unit)
             : std::string(WordOf(reading.quality));
}

}  // namespace

bool IsAboutClass(Question question) {
  return question == Question::Count || question == Question::ClassName || question == Question::Confirm;
}

Answer AnswerFromReading(const ObjectView& object, Question question,
                         const std::optional<nlohmann::json>& data) {
  const Reading& reading = object.reading;
  switch (question) {
    case Question::State:
      return Answer::Of(std::uint32_t(RawStateOf(reading)));
    case Question::Name:
      return Answer::Of(reading.name);
    case Question::ReadingText:
      return Answer::Of(ReadingText(reading));
    case Question::Value:
      return ValueAnswer(reading);
    case Question::CustomerServiceable:
      return Answer::Of(reading.customerServiceable ? 1U : 0U);
    case Question::Redundancy:
      return Answer::Of(std::uint32_t(RedundancyStateOf(reading)));
    case Question::Quality:
      return Answer::Of(std::uint32_t(reading.quality));
    case Question::Reason:
      return Answer::Of(reading.reason);
    case Question::Age:
      return Answer::Of(std::uint64_t(std::chrono::duration_cast<std::chrono::seconds>(object.age).count()));
    case Question::StateAbove:
      return AgainstLimit(reading, data, true);
    case Question::StateBelow:
      return AgainstLimit(reading, data, false);
    case Question::Advice:
      return Answer::Of(reading.advice);
    case Question::Count:
    case Question::Confirm:
    case Question::ClassName:
      break;
  }
  return Answer::Refusal(AnswerStatus::NotSupported);
}

}  // namespace emstatus::host
