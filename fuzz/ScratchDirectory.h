#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace emstatus::fuzz {

/// A folder for one program, in memory where the machine has such a place, removed at its end.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  void Write(std::string_view name, std::string_view text) const;
  std::string Read(std::string_view name) const;

 private:
  std::filesystem::path path_;
};

/// Makes a folder the current one for as long as it lives.
class EnteredDirectory {
 public:
  explicit EnteredDirectory(const ScratchDirectory& directory) : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(directory.Path());
  }
  ~EnteredDirectory() { std::filesystem::current_path(before_); }
  EnteredDirectory(const EnteredDirectory&) = delete;
  EnteredDirectory& operator=(const EnteredDirectory&) = delete;

 private:
  const std::filesystem::path before_;
};

}  // namespace emstatus::fuzz
