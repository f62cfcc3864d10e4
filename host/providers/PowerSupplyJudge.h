#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/providers/Reading.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// The attributes of a power supply or battery as they were read, by name ("online"); those it does not have
/// are not there.
using PowerSupplyValues = std::map<std::string, FileResult<std::string>>;

/// The attributes that JudgePowerSupply knows.
const std::vector<std::string>& PowerSupplyAttributes();

/// Whether it feeds a device that is connected (a mouse), not the machine. [any thread]
bool FeedsADevice(const PowerSupplyValues& values);

/// Whether it is a battery (or a UPS), not a supply from outside. [any thread]
bool IsBattery(const PowerSupplyValues& values);

/// The readings of a power supply or a battery: its state and, when `withTemperature`, its temperature. [any
/// thread]
std::vector<Reading> JudgePowerSupply(const std::string& name, const PowerSupplyValues& values,
                                      bool withTemperature);

/// Whether it is a supply from outside that is there for the machine alone, unlike one that anything may be
/// plugged into (USB). [any thread]
bool IsMains(const PowerSupplyValues& values);

/// Makes the supplies of these ids a redundancy group when two or more of them are there. [any thread]
void GroupMains(std::vector<Reading>& readings, const std::set<std::string>& mains);

}  // namespace emstatus::host
