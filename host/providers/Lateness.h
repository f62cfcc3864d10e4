#pragma once

#include <chrono>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/Reading.h"

namespace emstatus::host {

/// Makes `reading` late: its device has not answered for `silence`. [any thread]
void SetLate(Reading& reading, std::chrono::steady_clock::duration silence);

/// Gives readings made from an old sample the moment at which it was taken; late ones when it was taken
/// `lateAfter` before `now`. [any thread]
void SetAge(std::vector<Reading>& readings, std::chrono::steady_clock::time_point takenAt,
            std::chrono::steady_clock::time_point now, std::chrono::milliseconds lateAfter);

/// The reading of a device that never answered, of which no more is known than the name it has in its folder.
/// When it answers at last, it is told as what it is. [any thread]
Reading SilentReading(ObjectClass objectClass, const std::string& name,
                      std::chrono::steady_clock::duration silence);

}  // namespace emstatus::host
