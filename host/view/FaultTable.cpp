#include "host/view/FaultTable.h"

#include <algorithm>

namespace emstatus::host {

bool FaultRow::IsWrong() const {
  const bool onlyUnanswered = faults == std::vector{Fault::NoAnswer};
  return !effect.ends || (!effect.shows && !onlyUnanswered);
}

void AddFault(FaultTable& table, const FaultPlace& place, Fault fault, const FaultEffect& effect) {
  const auto same = std::ranges::find_if(table.rows, [&](const FaultRow& row) {
    // Not being answered for is judged in its own way.
    const bool alike = (fault == Fault::NoAnswer) == (row.faults.back() == Fault::NoAnswer);
    return row.place == place && row.effect == effect && (alike || effect.shows);
  });
  if (same != table.rows.end()) {
    same->faults.push_back(fault);
  } else {
    table.rows.push_back({place, {fault}, effect});
  }
}

bool HasWrongRows(const FaultTable& table) {
  return std::ranges::any_of(table.rows, &FaultRow::IsWrong);
}

}  // namespace emstatus::host
