#include "host/providers/EdacProvider.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

using std::chrono::duration_cast;
using std::chrono::seconds;

// Smaller steps of the clock are no matter: errors are kept by the hour.
constexpr std::chrono::minutes kClockStep{10};

unsigned long long Number(std::uint64_t number) {
  return number;
}

Reading ModuleNamed(const std::string& id, const std::string& name) {
  Reading reading;
  reading.objectClass = ObjectClass::MemoryModule;
  reading.id = id;
  reading.name = name.empty() ? id : name;
  reading.customerServiceable = true;
  return reading;
}

bool BelongsTo(std::string_view id, std::string_view controller) {
  return id.substr(0, id.find('/')) == controller;
}

}  // namespace

Reading JudgeMemoryModule(const ErrorHistory& history, std::int64_t now) {
  Reading reading;
  reading.objectClass = ObjectClass::MemoryModule;
  reading.quality = Quality::Good;
  reading.customerServiceable = true;
  const std::uint64_t corrected = history.CorrectedPerDay(now);
  const std::uint64_t uncorrected = history.NewUncorrected(now);
  reading.measurement = Measurement{static_cast<double>(corrected), Unit::Count, {}};
  reading.measurement->limits.upperWarning = static_cast<double>(kCorrectedPerDay + 1);
  if (uncorrected > 0) {
    reading.condition = Condition::Critical;
    reading.reason = Format("%llu uncorrected errors in the last 24 h, 0 expected", Number(uncorrected));
    reading.advice = "replace the memory module, then confirm";
  } else if (history.Uncorrected() > 0) {
    reading.condition = Condition::Warning;
    reading.reason = Format("%llu uncorrected errors more than 24 h ago, not confirmed; 0 expected",
                            Number(history.Uncorrected()));
    reading.advice = "replace the memory module, then confirm";
  } else if (corrected > 0) {
    reading.reason = Format("%llu corrected errors in the last 24 h, at most %llu expected",
                            Number(corrected), Number(kCorrectedPerDay));
  }
  if (reading.condition == Condition::Good && corrected > kCorrectedPerDay) {
    reading.condition = Condition::Warning;
    reading.reason += "; its failure is predicted";
    reading.advice = "replace the memory module at the next opportunity, then confirm";
  }
  if (history.LastRise() > 0) {
    reading.reason += (reading.reason.empty() ? "" : "; ") +
                      Format("%llu new since the last read", Number(history.LastRise()));
  }
  return reading;
}

EdacProvider::EdacProvider(const FilesFactory& makeFiles, const std::string& stateFolder,
                           std::chrono::milliseconds patience)
    : files_(makeFiles()), reads_(makeFiles, patience), state_(stateFolder, "memory-errors") {}

std::vector<Reading> EdacProvider::Read(const ReadContext& context) {
  Load();
  FollowClock(context);
  const std::vector<std::string> controllers = FindControllers();
  std::map<std::string, DeviceReads<EdacController>::Take> takes;
  for (const std::string& name : controllers) {
    takes[name] = [name](SystemFiles& files) { return ReadEdacController(files, name); };
  }
  std::vector<Reading> readings;
  for (const auto& [name, answer] : reads_.Read(takes, context.now)) {
    TellController(readings, name, answer, context);
  }
  there_.clear();
  std::ranges::transform(readings, std::inserter(there_, there_.end()), &Reading::id);
  TellGone(readings, controllers);
  Save();
  NoteProblem(readings);
  return readings;
}

std::vector<std::string> EdacProvider::FindControllers() {
  FileResult<std::vector<std::string>> names = files_->List(kEdacFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kEdacFolder);
  }
  std::erase_if(names.value, [](const std::string& name) { return !NumberAfter(name, "mc"); });
  return std::move(names.value);
}

void EdacProvider::FollowClock(const ReadContext& context) {
  const auto offset = context.wallTime.time_since_epoch() -
                      duration_cast<std::chrono::system_clock::duration>(context.now.time_since_epoch());
  const auto step = offset - clockOffset_.value_or(offset);
  if (step > kClockStep || step < -kClockStep) {
    for (auto& [id, known] : known_) {
      known.history.MoveClock(duration_cast<seconds>(step).count());
    }
  }
  clockOffset_ = offset;
}

void EdacProvider::TellController(std::vector<Reading>& readings, const std::string& controller,
                                  const DeviceAnswer<EdacController>& answer, const ReadContext& context) {
  if (!answer.sample) {
    TellLate(readings, controller, context.now - answer.waitingSince.value_or(context.now));
    return;
  }
  const auto now = duration_cast<seconds>(context.wallTime.time_since_epoch()).count();
  ErrorHistory::Counters counters;
  counters.boot = boot_;
  counters.age = answer.sample->age;
  if (counters.age) {
    counters.began = duration_cast<seconds>(answer.takenAt.time_since_epoch()).count() - *counters.age;
  }
  std::vector<Reading> told;
  for (const EdacModule& module : answer.sample->modules) {
    told.push_back(JudgeModule(module, counters, now));
  }
  SetAge(told, answer.takenAt, context.now, LateAfter());
  std::ranges::move(told, std::back_inserter(readings));
}

void EdacProvider::TellLate(std::vector<Reading>& readings, const std::string& controller,
                            Clock::duration silence) const {
  const std::size_t before = readings.size();
  for (const auto& [id, known] : known_) {
    if (BelongsTo(id, controller)) {
      readings.push_back(ModuleNamed(id, known.name));
    }
  }
  if (readings.size() == before) {
    // It may turn out that it counts by modules.
    readings.push_back(ModuleNamed(controller, "memory of controller " + controller.substr(2)));
    readings.back().mayGo = true;
  }
  std::for_each(readings.begin() + static_cast<std::ptrdiff_t>(before), readings.end(),
                [&](Reading& reading) { SetLate(reading, silence); });
}

Reading EdacProvider::JudgeModule(const EdacModule& module, ErrorHistory::Counters counters,
                                  std::int64_t now) {
  Reading reading = ModuleNamed(module.id, module.name);
  for (const auto& [counter, count] : {std::pair(&module.corrected, &counters.corrected),
                                       std::pair(&module.uncorrected, &counters.uncorrected)}) {
    const auto number = ParseUnsigned(counter->text.value);
    if (!counter->text) {
      SetUnread(reading, counter->attribute, counter->text.error);
      return reading;
    }
    if (!number) {
      SetUnknown(reading, Quality::Implausible,
                 counter->attribute + " reads \"" + counter->text.value + "\", a number expected");
      return reading;
    }
    *count = *number;
  }
  Known& known = known_[module.id];
  known.history.Update(counters, now);
  known.name = module.name;
  Reading judged = JudgeMemoryModule(known.history, now);
  judged.id = reading.id;
  judged.name = reading.name;
  return judged;
}

void EdacProvider::TellGone(std::vector<Reading>& readings, const std::vector<std::string>& controllers) {
  for (const auto& [id, known] : known_) {
    if (there_.contains(id)) {
      continue;
    }
    readings.push_back(ModuleNamed(id, known.name));
    const bool isAlone =
        std::ranges::any_of(controllers, [&id = id](const std::string& name) { return BelongsTo(id, name); });
    SetUnknown(readings.back(), Quality::Lost,
               isAlone ? "was there before and is gone" : "was there before and is gone with its controller");
    readings.back().advice =
        isAlone ? "look whether the module is seated; confirm when it was taken out on purpose"
                : "look whether the driver of the memory controller (EDAC) is loaded; confirm "
                  "when it is not wanted";
    // Once confirmed, it is not told again.
    readings.back().mayGo = true;
  }
}

void EdacProvider::Load() {
  if (std::exchange(isLoaded_, true)) {
    return;
  }
  boot_ = Trimmed(files_->ReadAttribute("/proc/sys/kernel/random/boot_id").value);
  const StateFile::Entries entries = state_.Load();
  loadProblem_ = state_.Problem();
  for (const auto& [id, text] : entries) {
    const std::size_t bar = text.find('|');
    if (auto history = ErrorHistory::FromText(std::string_view(text).substr(0, bar))) {
      known_[id] = {std::move(*history), bar == std::string::npos ? "" : text.substr(bar + 1)};
    } else {
      loadProblem_ = state_.Path() + ": what is kept of " + id + " is not understood";
    }
  }
}

void EdacProvider::Save() {
  StateFile::Entries entries;
  for (const auto& [id, known] : known_) {
    entries[id] = known.history.Text() + "|" + known.name;
  }
  state_.Save(entries);
}

void EdacProvider::NoteProblem(std::vector<Reading>& readings) const {
  std::string problem;
  if (!state_.Problem().empty()) {
    problem = "its errors cannot be kept over restarts: " + state_.Problem();
  } else if (!loadProblem_.empty()) {
    problem = "earlier errors may be forgotten: " + loadProblem_;
  }
  for (Reading& reading : readings) {
    if (!problem.empty() && reading.quality == Quality::Good) {
      reading.reason += (reading.reason.empty() ? "" : "; ") + problem;
    }
  }
}

bool EdacProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  const auto known = known_.find(id);
  if (objectClass != ObjectClass::MemoryModule || known == known_.end()) {
    return false;
  }
  loadProblem_.clear();
  if (there_.contains(id)) {
    known->second.history.Confirm();
  } else {
    known_.erase(known);
  }
  return true;
}

}  // namespace emstatus::host
