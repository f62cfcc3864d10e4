#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/providers/Provider.h"

namespace emstatus::host {

/// What can be chosen about how this machine is read.
struct LinuxOptions {
  /// The folder with a copy of another machine's /sys and /proc, which is read instead; empty: this machine.
  std::string root;
  /// Where counters are kept over restarts; empty: nowhere.
  std::string stateFolder;
  /// Mount points that are read although they are on the network or pseudo filesystems.
  std::vector<std::string> filesystems;
  /// Links that must be up whatever the administrator has set.
  std::vector<std::string> requiredLinks;
  /// Programs of which at least one process must run.
  std::vector<std::string> requiredProcesses;
  /// systemd units that must be active.
  std::vector<std::string> requiredUnits;
};

/// Every provider for a Linux machine, in the order in which objects are to be listed. Of a copy only what it
/// holds: no systemd, no drive that answers for itself, no table of /proc that is not in it.
std::vector<std::unique_ptr<Provider>> MakeLinuxProviders(const LinuxOptions& options);

}  // namespace emstatus::host
