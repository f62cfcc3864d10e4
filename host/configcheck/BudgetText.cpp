#include "host/configcheck/BudgetText.h"

#include <algorithm>

#include "host/machine/Utf8.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {

std::string DurationText(std::optional<std::chrono::milliseconds> duration) {
  constexpr double kMinute = 60;
  constexpr double kHour = 3600;
  if (!duration) {
    return "-";
  }
  const double seconds = std::chrono::duration<double>(*duration).count();
  if (seconds < 2 * kMinute) {
    return Format("%.1f s", seconds);
  }
  return seconds < 2 * kHour ? Format("%.1f min", seconds / kMinute) : Format("%.1f h", seconds / kHour);
}

std::string TableText(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], ColumnsOf(row[i]));
    }
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i] + std::string(widths[i] - ColumnsOf(row[i]) + 2, ' ');
    }
    text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

std::string BudgetText(const std::vector<DetectionBudget>& budgets) {
  std::vector<std::vector<std::string>> rows = {
      {"component", "source", "read every", "fault", "silence", "after inactive"}};
  for (const DetectionBudget& budget : budgets) {
    const bool isRead = !budget.sources.empty();
    rows.push_back({CleanUtf8(budget.component), isRead ? budget.sources : "not of emhost",
                    DurationText(isRead ? std::optional(budget.readEvery) : std::nullopt),
                    DurationText(budget.fault), DurationText(budget.silence),
                    DurationText(budget.wasInactive)});
  }
  return TableText(rows);
}

nlohmann::ordered_json SecondsJson(std::optional<std::chrono::milliseconds> duration) {
  return duration ? nlohmann::ordered_json(std::chrono::duration<double>(*duration).count())
                  : nlohmann::ordered_json();
}

nlohmann::ordered_json BudgetJson(const std::vector<DetectionBudget>& budgets) {
  auto list = nlohmann::ordered_json::array();
  for (const DetectionBudget& budget : budgets) {
    list.push_back({{"Component", CleanUtf8(budget.component)},
                    {"Sources", budget.sources},
                    {"ReadEverySeconds", SecondsJson(budget.readEvery)},
                    {"LateAfterSeconds", SecondsJson(budget.lateAfter)},
                    {"IsTold", budget.isTold},
                    {"InModuleSeconds", SecondsJson(budget.inModule)},
                    {"FaultSeconds", SecondsJson(budget.fault)},
                    {"SilenceSeconds", SecondsJson(budget.silence)},
                    {"AfterInactiveSeconds", SecondsJson(budget.wasInactive)}});
  }
  return list;
}

}  // namespace emstatus::host
