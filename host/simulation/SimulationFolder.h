#pragma once

#include <sys/types.h>

#include <ctime>
#include <optional>
#include <string>

namespace emstatus::host {

/// The simulation file in a configuration folder. Whoever reads the file sees it whole, old or new, whatever
/// happens here. Each operation throws a std::system_error when it cannot be done. [any thread]
class SimulationFolder {
 public:
  /// Tells one state of the file from another.
  struct Stamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec written{};
    timespec changed{};

    friend bool operator==(const Stamp& left, const Stamp& right);
  };

  explicit SimulationFolder(const std::string& folder);

  const std::string& Folder() const { return folder_; }
  const std::string& Path() const { return path_; }
  /// Where SetAside() puts a file.
  std::string SavedPath() const { return path_ + ".saved"; }

  /// Nothing when there is no file. Never throws.
  std::optional<Stamp> Look() const;

  /// The whole text; nothing when there is no file.
  std::optional<std::string> Read() const;

  /// Puts a file with this text in the place of the one before.
  void Replace(const std::string& text) const;

  /// Keeps `text` beside the file, for a person who may want it back.
  void SetAside(const std::string& text) const;

  /// False when there was no file.
  bool Remove() const;

  /// Removes the file if this is still its text. False when it is another file by now, or none.
  bool RemoveIf(const std::string& text) const;

 private:
  std::string folder_;
  std::string path_;
};

}  // namespace emstatus::host
