#include "host/commands/MeasurementText.h"

#include "host/configcheck/BudgetText.h"
#include "host/machine/Utf8.h"

namespace emstatus::host {
namespace {

std::string VerdictOn(const MeasuredTime& time) {
  if (!time.why.empty()) {
    return "not measured: " + time.why;
  }
  return time.IsOver() ? (time.taken ? "over" : "over: it does not show") : "within";
}

}  // namespace

std::string MeasurementText(const std::vector<MeasuredTime>& times) {
  std::vector<std::vector<std::string>> rows = {{"component", "case", "allowed", "measured", "verdict"}};
  for (const MeasuredTime& time : times) {
    rows.push_back({CleanUtf8(time.component), time.isSilence ? "silence" : "fault",
                    DurationText(time.why.empty() ? std::optional(time.allowed) : std::nullopt),
                    DurationText(time.taken), VerdictOn(time)});
  }
  return TableText(rows);
}

nlohmann::ordered_json MeasurementJson(const std::vector<MeasuredTime>& times) {
  auto list = nlohmann::ordered_json::array();
  for (const MeasuredTime& time : times) {
    list.push_back({{"Component", CleanUtf8(time.component)},
                    {"Case", time.isSilence ? "silence" : "fault"},
                    {"AllowedSeconds", SecondsJson(time.allowed)},
                    {"MeasuredSeconds", SecondsJson(time.taken)},
                    {"Verdict", VerdictOn(time)}});
  }
  return list;
}

}  // namespace emstatus::host
