#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/providers/Provider.h"

namespace emstatus::host {

/// What can be chosen about how this machine is read.
struct LinuxOptions {
  std::string sysRoot = "/sys";
  std::string procRoot = "/proc";
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

/// Every provider for a Linux machine, in the order in which objects are to be listed.
std::vector<std::unique_ptr<Provider>> MakeLinuxProviders(const LinuxOptions& options);

}  // namespace emstatus::host
