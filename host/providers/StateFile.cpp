#include "host/providers/StateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"
#include "host/providers/RealFiles.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kLongest = 4U << 20;

bool WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(descriptor, text.data(), text.size());
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return fsync(descriptor) == 0;
}

}  // namespace

StateFile::StateFile(const std::string& folder, const std::string& name)
    : folder_(folder), path_(folder.empty() ? "" : folder + "/" + name) {}

StateFile::Entries StateFile::Load() {
  written_.clear();
  problem_.clear();
  if (path_.empty()) {
    return {};
  }
  RealFiles files;
  const FileResult<std::string> text = files.ReadText(path_, kLongest);
  isUnreadable_ = !text && text.error != ENOENT;
  if (isUnreadable_) {
    Fail(text.error);
  }
  std::size_t number = 0;
  for (const std::string_view line : Lines(text.value)) {
    ++number;
    const std::size_t tab = line.find('\t');
    if (tab != std::string_view::npos) {
      written_.emplace(line.substr(0, tab), line.substr(tab + 1));
    } else {
      problem_ = path_ + ": line " + std::to_string(number) + " is no entry";
    }
  }
  return written_;
}

void StateFile::Save(const Entries& entries) {
  if (path_.empty() || isUnreadable_ || (entries == written_ && problem_.empty())) {
    return;
  }
  problem_.clear();
  std::string text;
  for (const auto& [name, value] : entries) {
    text += name + "\t" + value + "\n";
  }
  if (Write(text)) {
    written_ = entries;
  } else {
    Fail(errno);
  }
}

bool StateFile::Write(const std::string& text) const {
  mkdir(folder_.c_str(), 0755);
  // Another emhost may write its own at the same time.
  const std::string fresh = path_ + "." + std::to_string(getpid()) + ".new";
  const int descriptor = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (descriptor < 0) {
    return false;
  }
  const bool isWritten = WriteAll(descriptor, text);
  const int error = errno;
  close(descriptor);
  if (isWritten && rename(fresh.c_str(), path_.c_str()) == 0) {
    return true;
  }
  const int lastError = isWritten ? errno : error;
  unlink(fresh.c_str());
  errno = lastError;
  return false;
}

void StateFile::Fail(int error) {
  problem_ = path_ + ": " + ErrorText(error);
}

}  // namespace emstatus::host
