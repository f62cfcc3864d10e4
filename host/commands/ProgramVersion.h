#pragma once

namespace emstatus::host {

/// "1.2.0".
const char* ProgramVersion();

}  // namespace emstatus::host
