#pragma once

#include <string>
#include <string_view>

#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {

/// The files and links that a text like tests/data/machines/server.txt tells:
///
///     # a comment
///     /sys/class/hwmon/
///       hwmon0 -> ../../devices/platform/coretemp.0/hwmon/hwmon0
///     /sys/devices/platform/coretemp.0/hwmon/hwmon0/
///       name = coretemp
///
/// A path of its own in place of folder and name works, too ("/proc/meminfo = MemTotal: 4 kB"). A file that
/// is told again gets one more line. Throws a std::runtime_error with the number of a line that is none of
/// these.
MachineFolder::FileTable ParseMachine(std::string_view text);

}  // namespace emstatus::test
