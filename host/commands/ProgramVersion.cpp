#include "host/commands/ProgramVersion.h"

namespace emstatus::host {

const char* ProgramVersion() {
  return EMHOST_VERSION;
}

}  // namespace emstatus::host
