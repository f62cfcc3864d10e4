#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace emstatus::test {

/// A folder of its own for one test, removed with everything in it at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  /// The path of `name` in this folder.
  std::string File(std::string_view name) const { return (path_ / name).string(); }
  /// Writes a file (with the folders that its name needs) and returns its path.
  std::string Write(std::string_view name, std::string_view text) const;
  /// The whole text of a file; a test failure when it cannot be read.
  std::string Read(std::string_view name) const;

 private:
  std::filesystem::path path_;
};

}  // namespace emstatus::test
