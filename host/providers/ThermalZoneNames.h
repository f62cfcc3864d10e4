#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// The name of the chip in which the kernel mirrors zones of this type ("pch-haswell" becomes "pch_haswell").
/// [any thread]
std::string MirrorNameOf(std::string zoneType);

/// How many thermal zones there are for each name of a mirroring chip. [worker]
std::map<std::string, std::size_t> CountThermalZoneNames(SystemFiles& files);

}  // namespace emstatus::host
