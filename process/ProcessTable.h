#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "process/ProcessStatus.h"

namespace emstatus {

enum class ProcessReading {
  kRead,
  kGone,          // there is no such process, or no longer
  kDenied,        // this process may not look at that one
  kNoExecutable,  // a kernel thread or a zombie, asked for its executable
  kFailed,        // the entry could not be read or not be understood
};

struct ProcessExecutable {
  std::string path;
  bool isDeleted = false;  // the file was removed or replaced since the process began
};

/// What a look-up found. Processes that went away meanwhile are neither here nor there.
struct ProcessMatches {
  std::vector<pid_t> pids;  // ascending
  // May match, but could not be looked at
  std::vector<pid_t> unknown;
  // The list of processes itself could be read
  bool isListed = false;

  /// Whether an empty `pids` means that there is no such process.
  bool IsComplete() const { return isListed && unknown.empty(); }
};

/// The running processes, as /proc shows them. Every operation reads anew. [any thread; several at once]
class ProcessTable {
 public:
  explicit ProcessTable(std::string root = "/proc") : root_(std::move(root)) {}

  /// The numbers of all processes, ascending. False when the list cannot be read.
  bool List(std::vector<pid_t>& pids) const;

  /// The name as the kernel keeps it, cut to 15 bytes; it may hold any byte but zero. With another result
  /// than kRead the text is empty; so it is with the two operations below.
  ProcessReading ReadName(pid_t pid, std::string& name) const;

  ProcessReading ReadStatus(pid_t pid, ProcessStatus& status) const;

  /// The file the process runs, without the mark of a deleted one.
  ProcessReading ReadExecutable(pid_t pid, ProcessExecutable& executable) const;

  /// The processes of that name, zombies included. The kernel keeps 15 bytes of a name, so one that is not
  /// shorter is compared with what was kept; when the executable's file name begins like that too, it must be
  /// the whole name. (It begins otherwise when the process runs a script or took its name itself, and is not
  /// known without permission.)
  ProcessMatches FindByName(std::string_view name) const;

  /// The processes that run the file at `path`, an absolute path without links, whether or not it was
  /// deleted.
  ProcessMatches FindByExecutable(std::string_view path) const;

 private:
  std::string Entry(pid_t pid, const char* file) const;
  bool HasWholeName(pid_t pid, std::string_view kept, std::string_view name) const;

  const std::string root_;
};

}  // namespace emstatus
