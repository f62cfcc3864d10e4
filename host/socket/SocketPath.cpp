#include "host/socket/SocketPath.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace emstatus::host {
namespace {

constexpr const char* kSocketName = "/emhost.sock";
constexpr const char* kSystemFolder = "/run";
/// The runtime folder of the service, as others see it.
constexpr const char* kServiceFolder = "/run/emhost";

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

}  // namespace

SocketSurroundings SocketSurroundings::OfThisProcess() {
  // systemd lists several with colons between them; the first one is ours.
  const std::string folders = Variable("RUNTIME_DIRECTORY");
  return {folders.substr(0, folders.find(':')), Variable("XDG_RUNTIME_DIR"), geteuid() == 0};
}

std::string ServedSocket(const SocketSurroundings& surroundings) {
  if (!surroundings.runtimeDirectory.empty()) {
    return surroundings.runtimeDirectory + kSocketName;
  }
  if (surroundings.isRoot) {
    return std::string(kSystemFolder) + kSocketName;
  }
  return surroundings.userDirectory.empty() ? std::string() : surroundings.userDirectory + kSocketName;
}

std::vector<std::string> SocketCandidates(const SocketSurroundings& surroundings) {
  if (!surroundings.runtimeDirectory.empty()) {
    return {surroundings.runtimeDirectory + kSocketName};
  }
  std::vector<std::string> candidates;
  if (!surroundings.isRoot && !surroundings.userDirectory.empty()) {
    candidates.push_back(surroundings.userDirectory + kSocketName);
  }
  candidates.push_back(std::string(kServiceFolder) + kSocketName);
  candidates.push_back(std::string(kSystemFolder) + kSocketName);
  return candidates;
}

sockaddr_un SocketAddress(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof(address.sun_path)) {
    throw std::runtime_error("the path of a socket has 1 to " + std::to_string(sizeof(address.sun_path) - 1) +
                             " bytes, and \"" + path + "\" has " + std::to_string(path.size()) +
                             ". Name another one with --socket.");
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

}  // namespace emstatus::host
