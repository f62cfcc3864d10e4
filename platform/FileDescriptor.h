#pragma once

#include <unistd.h>

#include <string>
#include <string_view>

namespace emstatus {

/// Owns what open() returned, and closes it. [one thread at a time]
class FileDescriptor {
 public:
  explicit FileDescriptor(int number) : number_(number) {}
  ~FileDescriptor() {
    if (number_ >= 0) ::close(number_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  bool IsOpen() const { return number_ >= 0; }
  int Number() const { return number_; }

  /// All bytes from the current position to the end, or to a read error.
  std::string ReadToEnd() const;

  /// False when not everything could be written.
  bool Write(std::string_view text) const;

 private:
  const int number_;
};

}  // namespace emstatus
