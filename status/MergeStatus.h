#pragma once

#include "config/StatusValue.h"

namespace emstatus {

/// Whether `child` takes the place of `slot` when it is merged into it. Severity grows from 0 over 4, 5, 1
/// and 2 to 3; equal values, and those above 5 on either side, change nothing.
constexpr bool Overrides(StatusValue child, StatusValue slot) {
  switch (child) {
    case OK:
      return slot == NoStatus || slot == StatusFour || slot == StatusFive;
    case Warning:
      return (slot & 0xFA) == 0;
    case Error:
      return slot <= StatusFive && slot != Error;
    case StatusFour:
      return slot == NoStatus;
    case StatusFive:
      return (slot & 0xFB) == 0;
    default:
      return false;
  }
}

/// Merges `childValue` into `parentSlot`; true exactly when the slot changed.
constexpr bool MergeStatus(StatusValue& parentSlot, StatusValue childValue) {
  if (!Overrides(childValue, parentSlot)) return false;
  parentSlot = childValue;
  return true;
}

namespace merge_check {

constexpr StatusValue kBySeverity[] = {NoStatus, StatusFour, StatusFive, OK, Warning, Error};

constexpr bool FollowsSeverity() {
  for (int child = 0; child < 6; ++child) {
    for (int slot = 0; slot < 6; ++slot) {
      if (Overrides(kBySeverity[child], kBySeverity[slot]) != (child > slot)) return false;
    }
    for (int inert = 6; inert < 256; ++inert) {
      if (Overrides(kBySeverity[child], static_cast<StatusValue>(inert))) return false;
      if (Overrides(static_cast<StatusValue>(inert), kBySeverity[child])) return false;
    }
  }
  return true;
}
static_assert(FollowsSeverity());

}  // namespace merge_check
}  // namespace emstatus
