#pragma once

#include <string>

#include "host/providers/Reading.h"

namespace emstatus::host {

/// printf into a string. [any thread]
__attribute__((format(printf, 1, 2))) std::string Format(const char* format, ...);

/// A value as it stands in reasons, with its unit: "83.0 °C", "1200 RPM", "11.940 V", "12.3 GiB". [any
/// thread]
std::string ValueText(double value, Unit unit);

/// A time span in its largest whole unit: "45 s", "12 min", "5 h", "3 days". [any thread]
std::string SpanText(double seconds);

/// Adds to a list for people: "sda, sdb". [any thread]
void AddToList(std::string& list, const std::string& item);

}  // namespace emstatus::host
