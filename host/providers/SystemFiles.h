#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace emstatus::host {

/// What a call gave: the value, or the errno for which there is none.
template <typename Value>
struct FileResult {
  Value value{};
  /// 0 when it worked.
  int error = 0;

  explicit operator bool() const { return error == 0; }
};

/// A name in a folder.
struct FolderEntry {
  std::string name;
  /// A folder itself; a link to one is not.
  bool isFolder = false;
};

/// Room on a filesystem.
struct FilesystemRoom {
  /// Bytes: whole, free, and free for ordinary users.
  std::uint64_t size = 0;
  std::uint64_t free = 0;
  std::uint64_t available = 0;
  /// 0 where the filesystem does not count them.
  std::uint64_t inodes = 0;
  std::uint64_t inodesFree = 0;
};

/// The one seam between providers and the machine. Paths are those of a real machine ("/sys/class/hwmon",
/// "/proc/meminfo", "/"); an implementation may read a copy of them elsewhere. A call that fails says
/// why by its errno and is not tried again. An object belongs to one provider. [worker of that provider]
class SystemFiles {
 public:
  /// The longest text of an attribute.
  static constexpr std::size_t kAttributeBytes = 128;

  SystemFiles() = default;
  SystemFiles(const SystemFiles&) = delete;
  SystemFiles& operator=(const SystemFiles&) = delete;
  virtual ~SystemFiles() = default;

  /// The text of an attribute, by one read of at most kAttributeBytes, without its trailing white space. The
  /// file may stay open for the next time.
  virtual FileResult<std::string> ReadAttribute(const std::string& path) = 0;

  /// The whole text of a longer file (a table in /proc), as it is; EFBIG beyond `limit` bytes.
  virtual FileResult<std::string> ReadText(const std::string& path, std::size_t limit = 1U << 20) = 0;

  /// The names in a folder, sorted, without "." and "..".
  virtual FileResult<std::vector<std::string>> List(const std::string& path) = 0;

  /// The same with what each is, for walks that must not follow links. Unsorted.
  virtual FileResult<std::vector<FolderEntry>> ListEntries(const std::string& path) = 0;

  /// Where a symbolic link points, as it is written in the link.
  virtual FileResult<std::string> ReadLink(const std::string& path) = 0;

  /// The path with all its links followed, in the machine's terms (below "/sys", also in a copy).
  virtual FileResult<std::string> RealPath(const std::string& path) = 0;

  /// Room on the filesystem that is mounted at `path`; EOPNOTSUPP in a copy. May block as long as a dead
  /// network mount does.
  virtual FileResult<FilesystemRoom> Room(const std::string& path) = 0;

  /// Writes to an attribute that exists (to clear an alarm).
  virtual FileResult<bool> WriteAttribute(const std::string& path, const std::string& text) = 0;

  /// A descriptor on the attribute to poll() for changes; it was read once. The caller closes it.
  virtual FileResult<int> OpenForPoll(const std::string& path) = 0;
};

}  // namespace emstatus::host
