#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace emstatus {

/// What the kernel tells of a process in its "status" file.
struct ProcessStatus {
  std::string name;  // at most 15 bytes for a program
  pid_t pid = 0;
  pid_t parent = 0;
  char state = '?';  // the kernel's letter: R, S, D, T, t, I, Z, X
  uid_t realUser = 0;
  uid_t effectiveUser = 0;
  std::optional<std::uint64_t> residentKib;  // none for kernel threads and zombies

  /// Ended, and only waiting for its parent to take note.
  bool IsZombie() const { return state == 'Z'; }
  bool IsRunning() const { return state != 'Z' && state != 'X' && state != 'x'; }
};

/// Reads the text of a "status" file. Nothing when the name, the state, the process's or its parent's number
/// or the users are missing or no numbers. Lines that are not known are passed over. [any thread]
std::optional<ProcessStatus> ParseProcessStatus(std::string_view text);

}  // namespace emstatus
