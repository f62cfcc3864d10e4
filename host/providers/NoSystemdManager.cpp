#include "host/providers/UnitManager.h"

namespace emstatus::host {

std::unique_ptr<UnitManager> MakeSystemdManager() {
  return nullptr;
}

}  // namespace emstatus::host
