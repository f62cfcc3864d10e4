#include "process/ProcessTable.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstring>
#include <memory>
#include <optional>

namespace emstatus {

namespace {

constexpr std::size_t kKeptName = 15;
constexpr std::size_t kLargestEntry = 65536;
constexpr std::string_view kDeletedMark = " (deleted)";

ProcessReading ReasonOf(int error) {
  if (error == ENOENT || error == ESRCH) return ProcessReading::kGone;
  if (error == EACCES || error == EPERM) return ProcessReading::kDenied;
  return ProcessReading::kFailed;
}

ProcessReading ReadOpenFile(int file, std::string& text) {
  char part[4096];
  while (text.size() < kLargestEntry) {
    const ssize_t got = ::read(file, part, sizeof part);
    if (got == 0) return ProcessReading::kRead;
    if (got > 0) text.append(part, static_cast<std::size_t>(got));
    if (got < 0 && errno != EINTR) return ReasonOf(errno);
  }
  return ProcessReading::kFailed;
}

ProcessReading ReadFile(const std::string& path, std::string& text) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return ReasonOf(errno);
  const ProcessReading reading = ReadOpenFile(file, text);
  ::close(file);
  if (reading != ProcessReading::kRead) text.clear();
  return reading;
}

std::optional<pid_t> PidFrom(std::string_view name) {
  pid_t pid = 0;
  const char* const end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, pid);
  if (error != std::errc() || stop != end || pid <= 0) return std::nullopt;
  return pid;
}

/// A file may well have a name that ends like the mark: then link and path lead to the same file.
bool IsMarkedDeleted(const std::string& link, const std::string& target) {
  if (!target.ends_with(kDeletedMark)) return false;
  struct stat running;
  struct stat named;
  if (::stat(target.c_str(), &named) != 0) return true;
  return ::stat(link.c_str(), &running) != 0 || running.st_dev != named.st_dev ||
         running.st_ino != named.st_ino;
}

void Sort(ProcessMatches& matches, pid_t pid, ProcessReading reading, bool isMatch) {
  if (reading == ProcessReading::kDenied || reading == ProcessReading::kFailed) {
    matches.unknown.push_back(pid);
  } else if (reading == ProcessReading::kRead && isMatch) {
    matches.pids.push_back(pid);
  }
}

}  // namespace

std::string ProcessTable::Entry(pid_t pid, const char* file) const {
  return root_ + "/" + std::to_string(pid) + file;
}

bool ProcessTable::List(std::vector<pid_t>& pids) const {
  pids.clear();
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(root_.c_str()), &::closedir);
  if (directory == nullptr) return false;
  errno = 0;
  while (const dirent* const entry = ::readdir(directory.get())) {
    if (const std::optional<pid_t> pid = PidFrom(entry->d_name)) pids.push_back(*pid);
    errno = 0;
  }
  const bool whole = errno == 0;
  std::ranges::sort(pids);
  return whole;
}

ProcessReading ProcessTable::ReadName(pid_t pid, std::string& name) const {
  name.clear();
  const ProcessReading reading = ReadFile(Entry(pid, "/comm"), name);
  if (name.ends_with('\n')) name.pop_back();
  return reading;
}

ProcessReading ProcessTable::ReadStatus(pid_t pid, ProcessStatus& status) const {
  status = {};
  std::string text;
  const ProcessReading reading = ReadFile(Entry(pid, "/status"), text);
  if (reading != ProcessReading::kRead) return reading;
  std::optional<ProcessStatus> parsed = ParseProcessStatus(text);
  if (!parsed) return ProcessReading::kFailed;
  status = *std::move(parsed);
  return ProcessReading::kRead;
}

ProcessReading ProcessTable::ReadExecutable(pid_t pid, ProcessExecutable& executable) const {
  executable = {};
  const std::string link = Entry(pid, "/exe");
  std::string target(PATH_MAX + kDeletedMark.size(), '\0');
  const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
  if (length < 0) {
    const ProcessReading reason = ReasonOf(errno);
    const bool isThere = reason == ProcessReading::kGone && ::access(Entry(pid, "").c_str(), F_OK) == 0;
    return isThere ? ProcessReading::kNoExecutable : reason;
  }
  target.resize(static_cast<std::size_t>(length));
  executable.isDeleted = IsMarkedDeleted(link, target);
  if (executable.isDeleted) target.resize(target.size() - kDeletedMark.size());
  executable.path = std::move(target);
  return ProcessReading::kRead;
}

bool ProcessTable::HasWholeName(pid_t pid, std::string_view kept, std::string_view name) const {
  ProcessExecutable executable;
  if (ReadExecutable(pid, executable) != ProcessReading::kRead) return true;
  const std::string_view file = std::string_view(executable.path).substr(executable.path.rfind('/') + 1);
  return !file.starts_with(kept) || file == name;
}

ProcessMatches ProcessTable::FindByName(std::string_view name) const {
  ProcessMatches matches;
  std::vector<pid_t> pids;
  matches.isListed = List(pids);
  const std::string_view kept = name.substr(0, kKeptName);
  for (const pid_t pid : pids) {
    std::string found;
    const ProcessReading reading = ReadName(pid, found);
    // The names of kernel threads are not cut.
    const bool isWhole = found == name && name.size() != kKeptName;
    const bool isMatch = isWhole || (found == kept && HasWholeName(pid, kept, name));
    Sort(matches, pid, reading, isMatch);
  }
  return matches;
}

ProcessMatches ProcessTable::FindByExecutable(std::string_view path) const {
  ProcessMatches matches;
  std::vector<pid_t> pids;
  matches.isListed = List(pids);
  for (const pid_t pid : pids) {
    ProcessExecutable executable;
    const ProcessReading reading = ReadExecutable(pid, executable);
    Sort(matches, pid, reading, executable.path == path);
  }
  return matches;
}

}  // namespace emstatus
