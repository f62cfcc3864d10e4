#pragma once

#include <sys/un.h>

#include <string>
#include <vector>

/// Where the socket of a running emhost is. [any thread]
namespace emstatus::host {

/// What decides where the socket is.
struct SocketSurroundings {
  /// RUNTIME_DIRECTORY and XDG_RUNTIME_DIR; empty when they are not set.
  std::string runtimeDirectory;
  std::string userDirectory;
  bool isRoot = false;

  static SocketSurroundings OfThisProcess();
};

/// Where `run` puts it: in the service's runtime folder, else /run for root, else in the user's own runtime
/// folder. Empty where there is no such folder.
std::string ServedSocket(const SocketSurroundings& surroundings);

/// Where a command looks for it, best first: what serves this user before what serves the machine. In the
/// runtime folder of a service only there.
std::vector<std::string> SocketCandidates(const SocketSurroundings& surroundings);

/// The address of a path. Throws a std::runtime_error when the path is too long for one.
sockaddr_un SocketAddress(const std::string& path);

}  // namespace emstatus::host
