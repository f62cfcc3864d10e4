#pragma once

#include <string>

namespace emstatus::host {

/// The name of the chip in which the kernel mirrors zones of this type ("pch-haswell" becomes "pch_haswell").
/// [any thread]
std::string MirrorNameOf(std::string zoneType);

}  // namespace emstatus::host
