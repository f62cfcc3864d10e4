#include "host/providers/ThermalZoneNames.h"

#include <algorithm>

namespace emstatus::host {

std::string MirrorNameOf(std::string zoneType) {
  std::ranges::replace(zoneType, '-', '_');
  return zoneType;
}

}  // namespace emstatus::host
