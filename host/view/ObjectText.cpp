#include "host/view/ObjectText.h"

#include "host/machine/Numbering.h"
#include "host/machine/ReadingText.h"
#include "host/machine/Utf8.h"
#include "host/module/HostCodes.h"

namespace emstatus::host {
namespace {

void Append(std::string& text, const std::string& part) {
  if (!part.empty()) {
    text += (text.empty() ? "" : "; ") + part;
  }
}

std::string GroupText(const Reading& reading) {
  const auto state = RedundancyStateOf(reading);
  if (state != RedundancyState::Reduced && state != RedundancyState::Insufficient) {
    return {};
  }
  const Redundancy& group = *reading.redundancy;
  return std::to_string(group.present) + " of " + std::to_string(group.members) + " work, " +
         std::to_string(group.needed) + " needed";
}

}  // namespace

std::string ReadingOf(const ObjectView& object) {
  const Reading& reading = object.reading;
  return reading.quality == Quality::Good && reading.measurement
             ? NumberText(reading.measurement->value, reading.measurement->unit)
             : std::string();
}

std::string RemarkOn(const ObjectView& object) {
  const Reading& reading = object.reading;
  const bool known = reading.quality == Quality::Good;
  std::string remark = known ? std::string() : std::string(WordOf(reading.quality));
  if (!known && !reading.reason.empty()) {
    remark += ": " + reading.reason;
  } else {
    Append(remark, reading.reason);
  }
  if (!known || reading.condition != Condition::Good) {
    Append(remark, GroupText(reading));
    Append(remark, reading.advice);
  }
  return CleanUtf8(remark);
}

std::string LedText(std::uint32_t value, const std::string& statusWord) {
  return statusWord + ((value & kLedCustomerServiceable) != 0 ? ", the customer can mend it" : "");
}

}  // namespace emstatus::host
