#include "host/simulation/SimulationFolder.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

namespace emstatus::host {
namespace {

constexpr const char* kName = "/EM_STATUS_simu.ini";
constexpr std::size_t kLargestFile = 1U << 20;
/// Read by emhost, whichever user it runs as.
constexpr mode_t kMode = 0644;

[[noreturn]] void Throw(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(number_); }
  int Number() const { return number_; }

 private:
  int number_;
};

bool SameTime(const timespec& left, const timespec& right) {
  return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

std::string ReadAll(int file, const std::string& path) {
  std::string text;
  std::array<char, 4096> bytes{};
  for (;;) {
    const ssize_t count = read(file, bytes.data(), bytes.size());
    if (count == 0) {
      return text;
    }
    if (count > 0) {
      text.append(bytes.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      Throw(errno, "cannot read " + path);
    }
    if (text.size() > kLargestFile) {
      Throw(EFBIG, "cannot read " + path);
    }
  }
}

std::optional<std::string> ReadFile(const std::string& path) {
  // A pipe under this name must not hold emhost up.
  const int number = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (number < 0) {
    if (errno == ENOENT) {
      return std::nullopt;
    }
    Throw(errno, "cannot read " + path);
  }
  const Descriptor file(number);
  return ReadAll(file.Number(), path);
}

int WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(file, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return fchmod(file, kMode) != 0 || fsync(file) != 0 ? errno : 0;
}

/// The rename itself must survive a power failure, too. Some filesystems cannot do this, so it is only tried.
void SyncFolder(const std::string& folder) {
  const int number = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (number >= 0) {
    const Descriptor directory(number);
    fsync(directory.Number());
  }
}

/// An empty file beside `path`, its name and descriptor.
std::pair<std::string, int> NewFile(const std::string& folder, const std::string& path) {
  std::string name = path + ".XXXXXX";
  const int number = mkostemp(name.data(), O_CLOEXEC);
  if (number < 0) {
    Throw(errno, "cannot write in " + folder);
  }
  return {std::move(name), number};
}

void WriteFile(const std::string& folder, const std::string& path, const std::string& text) {
  const auto [temporary, number] = NewFile(folder, path);
  int error = 0;
  {
    const Descriptor file(number);
    error = WriteAll(file.Number(), text);
  }
  if (error == 0 && rename(temporary.c_str(), path.c_str()) != 0) {
    error = errno;
  }
  if (error != 0) {
    unlink(temporary.c_str());
    Throw(error, "cannot write " + path);
  }
  SyncFolder(folder);
}

}  // namespace

bool operator==(const SimulationFolder::Stamp& left, const SimulationFolder::Stamp& right) {
  return left.device == right.device && left.inode == right.inode && left.size == right.size &&
         SameTime(left.written, right.written) && SameTime(left.changed, right.changed);
}

SimulationFolder::SimulationFolder(const std::string& folder) : folder_(folder), path_(folder + kName) {}

std::optional<SimulationFolder::Stamp> SimulationFolder::Look() const {
  struct stat file {};
  if (stat(path_.c_str(), &file) != 0) {
    return std::nullopt;
  }
  return Stamp{file.st_dev, file.st_ino, file.st_size, file.st_mtim, file.st_ctim};
}

std::optional<std::string> SimulationFolder::Read() const {
  return ReadFile(path_);
}

void SimulationFolder::Replace(const std::string& text) const {
  WriteFile(folder_, path_, text);
}

void SimulationFolder::SetAside(const std::string& text) const {
  WriteFile(folder_, SavedPath(), text);
}

bool SimulationFolder::Remove() const {
  if (unlink(path_.c_str()) == 0) {
    SyncFolder(folder_);
    return true;
  }
  if (errno != ENOENT) {
    Throw(errno, "cannot remove " + path_);
  }
  return false;
}

bool SimulationFolder::RemoveIf(const std::string& text) const {
  if (Read() != text) {
    return false;
  }
  // Taken away first and looked at then, so that no newer simulation is removed by mistake.
  const auto [taken, number] = NewFile(folder_, path_);
  close(number);
  if (rename(path_.c_str(), taken.c_str()) != 0) {
    const int error = errno;
    unlink(taken.c_str());
    if (error == ENOENT) {
      return false;
    }
    Throw(error, "cannot remove " + path_);
  }
  const bool same = ReadFile(taken) == text;
  if (!same && renameat2(AT_FDCWD, taken.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE) != 0 &&
      errno != EEXIST) {
    // A filesystem that cannot tell: better an older simulation than one lost.
    static_cast<void>(rename(taken.c_str(), path_.c_str()));
  }
  // Fails when it was put back; otherwise a still newer one has come, or it is over.
  unlink(taken.c_str());
  SyncFolder(folder_);
  return same;
}

}  // namespace emstatus::host
