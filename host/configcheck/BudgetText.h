#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/configcheck/DetectionBudget.h"

namespace emstatus::host {

/// "1.1 s", "31 min", "2.5 h"; "-" for nothing. [any thread]
std::string DurationText(std::optional<std::chrono::milliseconds> duration);

/// The rows in columns as wide as they need to be, the first row being the heads.
std::string TableText(const std::vector<std::vector<std::string>>& rows);

/// The table for people, a line each.
std::string BudgetText(const std::vector<DetectionBudget>& budgets);

nlohmann::ordered_json BudgetJson(const std::vector<DetectionBudget>& budgets);

/// Seconds; null for nothing.
nlohmann::ordered_json SecondsJson(std::optional<std::chrono::milliseconds> duration);

}  // namespace emstatus::host
