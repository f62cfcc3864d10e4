#pragma once

#include <sys/types.h>

#include <stdexcept>
#include <string>

#include "host/socket/FileDescriptor.h"

namespace emstatus::host {

/// Another emhost serves the socket; the text says which.
class SocketTaken : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A Unix stream socket in the file system that listens from the constructor to the destructor, without
/// blocking. A lock beside it (".lock"), which the kernel frees however its holder ends, sees to it that
/// there is one listener for a path, and that only a dead one's file is replaced. [main thread]
class ListeningSocket {
 public:
  /// `mode` are the permissions of the file. Throws SocketTaken, or a std::runtime_error that says what is in
  /// the way.
  ListeningSocket(std::string path, mode_t mode);
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;
  /// Removes its files.
  ~ListeningSocket();

  int Descriptor() const { return listener_.Number(); }
  const std::string& Path() const { return path_; }

 private:
  std::runtime_error Failure(const std::string& what, int error) const;
  SocketTaken Taken() const;
  bool TryLock();
  void RemoveDead() const;
  void Bind(mode_t mode);

  const std::string path_;
  const std::string lockPath_;
  FileDescriptor lock_;
  FileDescriptor listener_;
  /// Which file is this socket's.
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace emstatus::host
