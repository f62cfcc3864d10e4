#include "host/providers/ThermalZoneNames.h"

#include <algorithm>
#include <utility>

#include "host/providers/KernelText.h"

namespace emstatus::host {

std::string MirrorNameOf(std::string zoneType) {
  std::ranges::replace(zoneType, '-', '_');
  return zoneType;
}

std::map<std::string, std::size_t> CountThermalZoneNames(SystemFiles& files) {
  static const std::string kFolder = "/sys/class/thermal";
  std::map<std::string, std::size_t> zones;
  for (const std::string& zone : files.List(kFolder).value) {
    if (NumberAfter(zone, "thermal_zone")) {
      if (FileResult<std::string> type = files.ReadAttribute(kFolder + "/" + zone + "/type"); type) {
        ++zones[MirrorNameOf(std::move(type.value))];
      }
    }
  }
  return zones;
}

}  // namespace emstatus::host
