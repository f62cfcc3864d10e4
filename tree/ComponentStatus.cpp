#include "tree/ComponentStatus.h"

#include <cstdio>

namespace emstatus {

std::string InstanceKey(std::uint32_t cabinet, std::uint32_t index) {
  char key[32];
  std::snprintf(key, sizeof key, "%03u-%02u", cabinet, index);
  return key;
}

}  // namespace emstatus
