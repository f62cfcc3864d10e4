#pragma once

#include <string>

#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// Where `path` of a machine ("/sys/class/net/eth0") leads to in the copy of its files below the folder
/// `root`, in the machine's terms. Links on the way, absolute ones too, are followed as on that machine, so
/// nothing leads out of the copy; `followLast` false: not a link at the end. The last part need not be there.
/// ENOENT, ENOTDIR, EACCES as for any path, ELOOP for links that lead in a circle. [any thread]
FileResult<std::string> PathInCopy(const std::string& root, const std::string& path, bool followLast = true);

}  // namespace emstatus::host
