#include "host/providers/ProcessProvider.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kNameLength = 15;
constexpr std::string_view kDeleted = " (deleted)";

// A live process is better than one that has ended.
bool IsBetter(char state, char than) {
  return than == 0 || (than == 'Z' && state != 'Z') || (than == 'T' && state != 'T' && state != 'Z');
}

// Whether a process is the one of a name: by what it calls itself, which the kernel cuts, or by its file.
bool IsProgram(const ProcessStat& stat, const std::string& program, const std::string& name) {
  if (program == name) {
    return true;
  }
  if (stat.name != name.substr(0, kNameLength)) {
    return false;
  }
  // Another program may share the start of a long name; a script shows its interpreter here.
  return name.size() <= kNameLength || !program.starts_with(stat.name);
}

std::vector<std::string> EachOnce(const std::vector<std::string>& names) {
  std::vector<std::string> once;
  for (const std::string& name : names) {
    if (std::ranges::find(once, name) == once.end()) {
      once.push_back(name);
    }
  }
  return once;
}

}  // namespace

std::optional<ProcessStat> ParseProcessStat(std::string_view text) {
  const std::size_t open = text.find('(');
  const std::size_t close = text.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open ||
      close + 2 >= text.size()) {
    return std::nullopt;
  }
  return ProcessStat{std::string(text.substr(open + 1, close - open - 1)), text[close + 2]};
}

ProcessProvider::ProcessProvider(std::unique_ptr<SystemFiles> files, const std::vector<std::string>& required)
    : files_(std::move(files)), required_(EachOnce(required)) {}

std::vector<Reading> ProcessProvider::Read(const ReadContext&) {
  std::erase_if(found_, [this](const auto& entry) {
    const std::string& process = entry.second.process;
    const std::optional<ProcessStat> stat = ReadStat(process);
    return !stat || stat->state == 'Z' || stat->state == 'T' ||
           !IsProgram(*stat, ReadProgram(process), entry.first);
  });
  const bool complete =
      std::ranges::all_of(required_, [this](const std::string& name) { return found_.contains(name); });
  const bool seesAll = complete || Search();
  std::vector<Reading> readings;
  for (const std::string& name : required_) {
    readings.push_back(Judge(name, seesAll));
  }
  return readings;
}

std::optional<ProcessStat> ProcessProvider::ReadStat(const std::string& process) {
  const FileResult<std::string> text = files_->ReadText("/proc/" + process + "/stat", 8192);
  return text ? ParseProcessStat(text.value) : std::nullopt;
}

std::string ProcessProvider::ReadProgram(const std::string& process) {
  const FileResult<std::string> link = files_->ReadLink("/proc/" + process + "/exe");
  std::string_view program = BaseName(link.value);
  if (program.ends_with(kDeleted)) {
    program.remove_suffix(kDeleted.size());
  }
  return std::string(program);
}

bool ProcessProvider::Search() {
  const FileResult<std::vector<std::string>> processes = files_->List("/proc");
  if (!processes) {
    throw std::system_error(processes.error, std::generic_category(), "/proc");
  }
  bool seesFirst = false;
  for (const std::string& process : processes.value) {
    const auto stat = NumberAfter(process, "") ? ReadStat(process) : std::nullopt;
    if (!stat) {
      continue;
    }
    seesFirst = seesFirst || process == "1";
    const std::string program = ReadProgram(process);
    for (const std::string& name : required_) {
      if (IsProgram(*stat, program, name) && IsBetter(stat->state, found_[name].state)) {
        found_[name] = {process, stat->state};
      }
    }
  }
  std::erase_if(found_, [](const auto& entry) { return entry.second.state == 0; });
  return seesFirst;
}

Reading ProcessProvider::Judge(const std::string& name, bool seesAll) const {
  Reading reading;
  reading.objectClass = ObjectClass::Process;
  reading.id = name;
  reading.name = name;
  reading.quality = Quality::Good;
  reading.customerServiceable = true;
  const auto found = found_.find(name);
  if (found == found_.end() && !seesAll) {
    SetUnknown(reading, Quality::Late, "not seen, but the processes of other users are hidden from emhost");
    reading.advice = "run emhost as root, or mount /proc without hidepid";
    return reading;
  }
  const char state = found == found_.end() ? 0 : found->second.state;
  if (state == 0 || state == 'Z' || state == 'X') {
    reading.condition = Condition::Critical;
    reading.reason = state == 0 ? "no process of it runs, at least 1 expected"
                                : "its process has ended and waits for its parent, 1 running expected";
    reading.advice = "start it, and find out in its log why it ended";
  } else if (state == 'T' || state == 't') {
    reading.condition = Condition::Warning;
    reading.reason = "its process " + found->second.process + " was stopped by a signal, running expected";
    reading.advice = "let it go on: kill -CONT " + found->second.process;
  }
  return reading;
}

}  // namespace emstatus::host
