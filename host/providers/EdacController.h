#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// An error counter as it was read.
struct EdacCounter {
  /// The name of its attribute.
  std::string attribute;
  FileResult<std::string> text;
};

/// What a memory controller counts errors for: a module, a rank or a row of them, or all that it cannot tell
/// apart.
struct EdacModule {
  /// Its folder below that of the controllers ("mc0/dimm3").
  std::string id;
  /// For people: its label on the board where that is known.
  std::string name;
  EdacCounter corrected;
  EdacCounter uncorrected;
};

/// A memory controller with all that it counts.
struct EdacController {
  /// Seconds for which its counters have counted; absent where the driver does not tell.
  std::optional<std::int64_t> age;
  std::vector<EdacModule> modules;
};

/// The folder of the memory controllers, each by its name ("mc0").
inline constexpr char kEdacFolder[] = "/sys/devices/system/edac/mc";

/// Reads the counters of the controller `name`, each of its modules once; without modules when it is gone.
/// [any thread]
EdacController ReadEdacController(SystemFiles& files, const std::string& name);

}  // namespace emstatus::host
