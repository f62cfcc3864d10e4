#include "host/socket/ListeningSocket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/socket/SocketPath.h"

namespace emstatus::host {
namespace {

constexpr int kListenBacklog = 64;

const sockaddr* Generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

/// Whether somebody listens there, also when he has no room for another connection.
bool IsListenedAt(const std::string& path) {
  const FileDescriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const sockaddr_un address = SocketAddress(path);
  return probe && (connect(probe.Number(), Generic(address), sizeof(address)) == 0 || errno == EAGAIN);
}

}  // namespace

ListeningSocket::ListeningSocket(std::string path, mode_t mode)
    : path_(std::move(path)), lockPath_(path_ + ".lock") {
  static_cast<void>(SocketAddress(path_));
  while (!TryLock()) {
  }
  RemoveDead();
  Bind(mode);
}

ListeningSocket::~ListeningSocket() {
  struct stat status {};
  if (lstat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_) {
    unlink(path_.c_str());
  }
  unlink(lockPath_.c_str());
}

std::runtime_error ListeningSocket::Failure(const std::string& what, int error) const {
  return std::runtime_error(what + ": " + std::generic_category().message(error) +
                            ". Name another socket with --socket, or serve none with --no-socket.");
}

SocketTaken ListeningSocket::Taken() const {
  std::array<char, 32> text{};
  const long holder =
      lock_ && pread(lock_.Number(), text.data(), text.size() - 1, 0) > 0 ? std::atol(text.data()) : 0;
  return SocketTaken("another emhost" +
                     (holder > 0 ? " (process " + std::to_string(holder) + ")" : std::string()) +
                     " serves the socket " + path_);
}

/// False when the lock's file was removed by its last holder while it was being taken.
bool ListeningSocket::TryLock() {
  lock_ = FileDescriptor(open(lockPath_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!lock_) {
    throw Failure("cannot make " + lockPath_, errno);
  }
  if (flock(lock_.Number(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) {
      throw Taken();
    }
    throw Failure("cannot lock " + lockPath_, errno);
  }
  struct stat locked {};
  struct stat named {};
  if (fstat(lock_.Number(), &locked) != 0 || lstat(lockPath_.c_str(), &named) != 0 ||
      locked.st_ino != named.st_ino || locked.st_dev != named.st_dev) {
    return false;
  }
  // For people and for Taken() only: what it says decides nothing.
  const std::string holder = std::to_string(getpid()) + "\n";
  static_cast<void>(ftruncate(lock_.Number(), 0) == 0 &&
                    pwrite(lock_.Number(), holder.data(), holder.size(), 0) > 0);
  return true;
}

/// The lock is held, so a socket that is still there belongs to nobody, unless somebody has removed the lock.
void ListeningSocket::RemoveDead() const {
  struct stat status {};
  if (lstat(path_.c_str(), &status) != 0) {
    return;
  }
  if (!S_ISSOCK(status.st_mode)) {
    unlink(lockPath_.c_str());
    throw std::runtime_error(path_ + " is there and is no socket. Remove it, or name another with --socket.");
  }
  if (IsListenedAt(path_)) {
    throw SocketTaken("somebody listens at the socket " + path_ + " already");
  }
  if (unlink(path_.c_str()) != 0) {
    throw Failure("cannot remove the dead socket " + path_, errno);
  }
}

void ListeningSocket::Bind(mode_t mode) {
  listener_ = FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const sockaddr_un address = SocketAddress(path_);
  // The file is made with the socket's own permissions, less the umask: at no moment are there more.
  if (!listener_ || fchmod(listener_.Number(), mode) != 0 ||
      bind(listener_.Number(), Generic(address), sizeof(address)) != 0) {
    throw Failure("cannot make the socket " + path_, errno);
  }
  struct stat status {};
  if (chmod(path_.c_str(), mode) != 0 || lstat(path_.c_str(), &status) != 0 ||
      listen(listener_.Number(), kListenBacklog) != 0) {
    const int error = errno;
    unlink(path_.c_str());
    throw Failure("cannot serve the socket " + path_, error);
  }
  device_ = status.st_dev;
  inode_ = status.st_ino;
}

}  // namespace emstatus::host
