#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/providers/Provider.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// What /proc/PID/stat tells of a process.
struct ProcessStat {
  /// The program's name, cut to 15 characters by the kernel.
  std::string name;
  /// 'R' runs, 'S' sleeps, 'D' waits, 'T' is stopped, 'Z' has ended, ...
  char state = 0;
};

/// Reads a text of /proc/PID/stat, whose name may hold blanks and parentheses. [any thread]
std::optional<ProcessStat> ParseProcessStat(std::string_view text);

/// Programs of which at least one process must run.
class ProcessProvider final : public Provider {
 public:
  /// `required`: names of programs: what a process calls itself, or the file name of its executable. [any
  /// thread]
  ProcessProvider(std::unique_ptr<SystemFiles> files, const std::vector<std::string>& required);

  std::string_view Name() const override { return "processes"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(5); }
  std::vector<Reading> Read(const ReadContext& context) override;

 private:
  std::optional<ProcessStat> ReadStat(const std::string& process);
  /// The name of the file that the process runs; empty for one of the kernel, or when we may not know it.
  std::string ReadProgram(const std::string& process);
  /// Finds a process for each program; true when no process can be hidden from us.
  bool Search();
  Reading Judge(const std::string& name, bool seesAll) const;

  struct Found {
    std::string process;
    char state = 0;
  };

  const std::unique_ptr<SystemFiles> files_;
  const std::vector<std::string> required_;
  std::map<std::string, Found> found_;
};

}  // namespace emstatus::host
