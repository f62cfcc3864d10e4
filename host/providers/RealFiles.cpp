#include "host/providers/RealFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "host/providers/PathInCopy.h"

namespace emstatus::host {
namespace {

template <typename Value>
FileResult<Value> Failed() {
  return {Value{}, errno};
}

std::string WithoutTrailingSpace(std::string_view text) {
  constexpr std::string_view kSpace(" \t\r\n\0", 5);
  const std::size_t last = text.find_last_not_of(kSpace);
  return std::string(text.substr(0, last == std::string_view::npos ? 0 : last + 1));
}

ssize_t ReadOnce(int descriptor, char* bytes, std::size_t size) {
  ssize_t count = 0;
  do {
    count = pread(descriptor, bytes, size, 0);
  } while (count < 0 && errno == EINTR);
  return count;
}

FileResult<std::string> ReadFrom(int descriptor) {
  std::array<char, SystemFiles::kAttributeBytes> bytes{};
  const ssize_t count = ReadOnce(descriptor, bytes.data(), bytes.size());
  if (count < 0) {
    return Failed<std::string>();
  }
  return {WithoutTrailingSpace({bytes.data(), static_cast<std::size_t>(count)}), 0};
}

// A kept file that was removed, or replaced under its name, would go on telling its last text.
bool IsUnlinked(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) != 0 || status.st_nlink == 0;
}

bool IsFolder(const dirent& entry, int parent) {
  if (entry.d_type != DT_UNKNOWN) {
    return entry.d_type == DT_DIR;
  }
  struct stat status {};
  return fstatat(parent, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) {
      close(number_);
    }
  }
  int Number() const { return number_; }

 private:
  int number_;
};

}  // namespace

RealFiles::RealFiles(std::string copy) : copy_(std::move(copy)) {}

RealFiles::~RealFiles() {
  for (const auto& [path, descriptor] : kept_) {
    close(descriptor);
  }
}

FileResult<std::string> RealFiles::Map(const std::string& path, bool followLast) const {
  if (copy_.empty()) {
    return {path, 0};
  }
  FileResult<std::string> place = PathInCopy(copy_, path, followLast);
  place.value.insert(0, copy_);
  return place;
}

FileResult<int> RealFiles::Open(const std::string& mapped) const {
  if (!copy_.empty()) {
    struct stat status {};
    if (lstat(mapped.c_str(), &status) != 0) {
      return {-1, errno};
    }
    if (!S_ISREG(status.st_mode)) {
      return {-1, S_ISDIR(status.st_mode) ? EISDIR : ENXIO};
    }
  }
  const int descriptor = open(mapped.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  return {descriptor, descriptor < 0 ? errno : 0};
}

FileResult<int> RealFiles::KeptDescriptor(const std::string& path) {
  if (const auto found = kept_.find(path); found != kept_.end()) {
    if (!IsUnlinked(found->second)) {
      return {found->second, 0};
    }
    Forget(path);
  }
  const FileResult<int> descriptor = Open(path);
  if (!descriptor) {
    return descriptor;
  }
  if (kept_.size() >= kKeptFiles) {
    close(kept_.begin()->second);
    kept_.erase(kept_.begin());
  }
  kept_.emplace(path, descriptor.value);
  return descriptor;
}

void RealFiles::Forget(const std::string& path) {
  if (const auto found = kept_.find(path); found != kept_.end()) {
    close(found->second);
    kept_.erase(found);
  }
}

FileResult<std::string> RealFiles::ReadAttribute(const std::string& path) {
  if (!copy_.empty()) {
    const FileResult<std::string> mapped = Map(path);
    const FileResult<int> opened = mapped ? Open(mapped.value) : FileResult<int>{-1, mapped.error};
    if (!opened) {
      return {{}, opened.error};
    }
    const Descriptor file(opened.value);
    return ReadFrom(file.Number());
  }
  const bool wasKept = kept_.contains(path);
  const FileResult<int> descriptor = KeptDescriptor(path);
  if (!descriptor) {
    return {{}, descriptor.error};
  }
  FileResult<std::string> text = ReadFrom(descriptor.value);
  if (!text) {
    Forget(path);
    // The device behind a kept descriptor may be gone and another have taken its place.
    const bool stale = text.error == ENODEV || text.error == ESRCH || text.error == ENOENT;
    return wasKept && stale ? ReadAttribute(path) : text;
  }
  return text;
}

FileResult<std::string> RealFiles::ReadText(const std::string& path, std::size_t limit) {
  const FileResult<std::string> mapped = Map(path);
  const FileResult<int> opened = mapped ? Open(mapped.value) : FileResult<int>{-1, mapped.error};
  if (!opened) {
    return {{}, opened.error};
  }
  const Descriptor file(opened.value);
  std::string text;
  std::array<char, 4096> bytes{};
  for (;;) {
    const ssize_t count = read(file.Number(), bytes.data(), bytes.size());
    if (count == 0) {
      return {std::move(text), 0};
    }
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      return Failed<std::string>();
    }
    text.append(bytes.data(), static_cast<std::size_t>(count));
    if (text.size() > limit) {
      return {{}, EFBIG};
    }
  }
}

FileResult<std::vector<FolderEntry>> RealFiles::ListEntries(const std::string& path) {
  const FileResult<std::string> mapped = Map(path);
  if (!mapped) {
    return {{}, mapped.error};
  }
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(mapped.value.c_str()), closedir);
  if (!folder) {
    return Failed<std::vector<FolderEntry>>();
  }
  std::vector<FolderEntry> entries;
  for (errno = 0; const dirent* entry = readdir(folder.get()); errno = 0) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      entries.push_back({std::string(name), IsFolder(*entry, dirfd(folder.get()))});
    }
  }
  if (errno != 0) {
    return Failed<std::vector<FolderEntry>>();
  }
  return {std::move(entries), 0};
}

FileResult<std::vector<std::string>> RealFiles::List(const std::string& path) {
  FileResult<std::vector<FolderEntry>> entries = ListEntries(path);
  std::vector<std::string> names;
  for (FolderEntry& entry : entries.value) {
    names.push_back(std::move(entry.name));
  }
  std::sort(names.begin(), names.end());
  return {std::move(names), entries.error};
}

FileResult<std::string> RealFiles::ReadLink(const std::string& path) {
  const FileResult<std::string> mapped = Map(path, false);
  if (!mapped) {
    return {{}, mapped.error};
  }
  std::array<char, PATH_MAX> bytes{};
  const ssize_t count = readlink(mapped.value.c_str(), bytes.data(), bytes.size());
  if (count < 0) {
    return Failed<std::string>();
  }
  return {std::string(bytes.data(), static_cast<std::size_t>(count)), 0};
}

FileResult<std::string> RealFiles::RealPath(const std::string& path) {
  if (!copy_.empty()) {
    FileResult<std::string> place = PathInCopy(copy_, path);
    struct stat status {};
    if (place && lstat((copy_ + place.value).c_str(), &status) != 0) {
      return Failed<std::string>();
    }
    return place;
  }
  const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), std::free);
  return resolved ? FileResult<std::string>{resolved.get(), 0} : Failed<std::string>();
}

FileResult<FilesystemRoom> RealFiles::Room(const std::string& path) {
  if (!copy_.empty()) {
    return {{}, EOPNOTSUPP};
  }
  struct statvfs numbers {};
  if (statvfs(path.c_str(), &numbers) != 0) {
    return Failed<FilesystemRoom>();
  }
  const std::uint64_t block = numbers.f_frsize;
  FilesystemRoom room;
  room.size = numbers.f_blocks * block;
  room.free = numbers.f_bfree * block;
  room.available = numbers.f_bavail * block;
  room.inodes = numbers.f_files;
  room.inodesFree = numbers.f_ffree;
  return {room, 0};
}

FileResult<bool> RealFiles::WriteAttribute(const std::string& path, const std::string& text) {
  if (!copy_.empty()) {
    return {false, EROFS};
  }
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.Number() < 0 || write(file.Number(), text.data(), text.size()) < 0) {
    return Failed<bool>();
  }
  return {true, 0};
}

FileResult<int> RealFiles::OpenForPoll(const std::string& path) {
  const FileResult<std::string> mapped = Map(path);
  const FileResult<int> opened = mapped ? Open(mapped.value) : FileResult<int>{-1, mapped.error};
  if (!opened) {
    return opened;
  }
  // sysfs reports a change only to those who have read the attribute before.
  std::array<char, kAttributeBytes> bytes{};
  if (ReadOnce(opened.value, bytes.data(), bytes.size()) < 0) {
    const int error = errno;
    close(opened.value);
    return {-1, error};
  }
  return opened;
}

}  // namespace emstatus::host
