#pragma once

#include <string>
#include <string_view>

namespace emstatus::fuzz {

/// A file in memory that can be opened by its path. Failures end the program.
class MemoryFile {
 public:
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const std::string& Path() const { return path_; }
  /// The part of the path behind "/proc/self/fd/".
  std::string Name() const { return std::to_string(file_); }

  void Write(std::string_view text);
  std::string Read() const;

 private:
  const int file_;
  const std::string path_;
};

}  // namespace emstatus::fuzz
