#include "host/providers/EdacProvider.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

const std::string kFolder = "/sys/devices/system/edac/mc";

bool IsNumbered(std::string_view name, std::string_view prefix) {
  return NumberAfter(name, prefix).has_value();
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
    reading.reason = Format("%llu uncorrected errors in the last 24 h, 0 expected",
                            static_cast<unsigned long long>(uncorrected));
    reading.advice = "replace the memory module, then confirm";
  } else if (history.Uncorrected() > 0) {
    reading.condition = Condition::Warning;
    reading.reason = Format("%llu uncorrected errors more than 24 h ago, not confirmed; 0 expected",
                            static_cast<unsigned long long>(history.Uncorrected()));
    reading.advice = "replace the memory module, then confirm";
  } else if (corrected > kCorrectedPerDay) {
    reading.condition = Condition::Warning;
    reading.reason =
        Format("%llu corrected errors in the last 24 h, at most %llu expected; its failure is predicted",
               static_cast<unsigned long long>(corrected), static_cast<unsigned long long>(kCorrectedPerDay));
    reading.advice = "replace the memory module at the next opportunity, then confirm";
  }
  return reading;
}

EdacProvider::EdacProvider(std::unique_ptr<SystemFiles> files, const std::string& stateFolder)
    : files_(std::move(files)), state_(stateFolder, "memory-errors") {}

std::vector<Reading> EdacProvider::Read(const ReadContext& context) {
  const std::int64_t now =
      std::chrono::duration_cast<std::chrono::seconds>(context.wallTime.time_since_epoch()).count();
  Load();
  const std::vector<Module> modules = FindModules(now);
  std::vector<Reading> readings;
  for (const Module& module : modules) {
    Reading reading = ReadModule(module, now);
    if (reading.quality != Quality::Lost) {
      readings.push_back(std::move(reading));
    }
  }
  // Without its driver nothing is told of memory, so nothing is missed either.
  if (!modules.empty()) {
    TellGone(readings, modules);
    Save(readings);
  }
  return readings;
}

std::vector<EdacProvider::Module> EdacProvider::FindModules(std::int64_t now) {
  const FileResult<std::vector<std::string>> controllers = files_->List(kFolder);
  if (!controllers && !IsGone(controllers.error)) {
    throw std::system_error(controllers.error, std::generic_category(), kFolder);
  }
  std::vector<Module> modules;
  for (const std::string& controller : controllers.value) {
    if (IsNumbered(controller, "mc")) {
      AddController(modules, controller, now);
    }
  }
  return modules;
}

void EdacProvider::AddController(std::vector<Module>& modules, const std::string& controller,
                                 std::int64_t now) {
  const std::string folder = kFolder + "/" + controller;
  Module whole{controller,
               "memory controller " + controller.substr(2) + " (errors without a module)",
               folder,
               "ce_noinfo_count",
               "ue_noinfo_count",
               std::nullopt};
  if (const auto age = Number(folder + "/seconds_since_reset"); age && *age >= 0) {
    whole.since = now - *age;
  }
  if (!AddDimms(modules, folder, whole) && !AddRows(modules, folder, whole)) {
    modules.push_back({controller, "memory of controller " + controller.substr(2), folder, "ce_count",
                       "ue_count", whole.since});
  } else if (Number(folder + "/ce_noinfo_count") || Number(folder + "/ue_noinfo_count")) {
    modules.push_back(std::move(whole));
  }
}

bool EdacProvider::AddDimms(std::vector<Module>& modules, const std::string& folder,
                            const Module& controller) {
  bool found = false;
  for (const std::string& entry : files_->List(folder).value) {
    if (!IsNumbered(entry, "dimm") && !IsNumbered(entry, "rank")) {
      continue;
    }
    found = true;
    Module module = controller;
    module.id += "/" + entry;
    module.countersFolder = folder + "/" + entry;
    module.correctedName = "dimm_ce_count";
    module.uncorrectedName = "dimm_ue_count";
    const std::string label = LabelIn(module.countersFolder + "/dimm_label");
    const FileResult<std::string> place = files_->ReadAttribute(module.countersFolder + "/dimm_location");
    module.name = !label.empty()        ? label
                  : place.value.empty() ? module.id
                                        : module.id + " (" + std::string(Trimmed(place.value)) + ")";
    modules.push_back(std::move(module));
  }
  return found;
}

// Older kernels count by the row of the board only.
bool EdacProvider::AddRows(std::vector<Module>& modules, const std::string& folder,
                           const Module& controller) {
  bool found = false;
  for (const std::string& entry : files_->List(folder).value) {
    if (IsNumbered(entry, "csrow")) {
      found = true;
      Module module = controller;
      module.id += "/" + entry;
      module.countersFolder = folder + "/" + entry;
      module.correctedName = "ce_count";
      module.uncorrectedName = "ue_count";
      const std::string label = LabelIn(module.countersFolder + "/ch0_dimm_label");
      module.name = label.empty() ? module.id : label;
      modules.push_back(std::move(module));
    }
  }
  return found;
}

std::string EdacProvider::LabelIn(const std::string& path) {
  std::string label(Trimmed(files_->ReadAttribute(path).value));
  std::ranges::replace_if(
      label, [](unsigned char character) { return character < ' '; }, ' ');
  return label;
}

Reading EdacProvider::ReadModule(const Module& module, std::int64_t now) {
  Reading unread;
  unread.objectClass = ObjectClass::MemoryModule;
  unread.id = module.id;
  unread.name = module.name;
  unread.customerServiceable = true;
  ErrorHistory::Counters counters;
  counters.since = module.since;
  for (const auto& [name, count] : {std::pair(module.correctedName, &counters.corrected),
                                    std::pair(module.uncorrectedName, &counters.uncorrected)}) {
    const FileResult<std::string> text = files_->ReadAttribute(module.countersFolder + "/" + name);
    const auto number = ParseUnsigned(text.value);
    if (!text) {
      SetUnread(unread, name, text.error);
      return unread;
    }
    if (!number) {
      SetUnknown(unread, Quality::Implausible, name + " reads \"" + text.value + "\", a number expected");
      return unread;
    }
    *count = *number;
  }
  ErrorHistory& history = histories_[module.id];
  history.Update(counters, now);
  names_[module.id] = module.name;
  Reading reading = JudgeMemoryModule(history, now);
  reading.id = module.id;
  reading.name = module.name;
  return reading;
}

void EdacProvider::TellGone(std::vector<Reading>& readings, const std::vector<Module>& modules) {
  for (const auto& [id, history] : histories_) {
    if (std::ranges::find(modules, id, &Module::id) == modules.end()) {
      Reading reading;
      reading.objectClass = ObjectClass::MemoryModule;
      reading.id = id;
      reading.name = names_[id].empty() ? id : names_[id];
      reading.customerServiceable = true;
      SetUnknown(reading, Quality::Lost, "was there before and is gone");
      reading.advice = "look whether the module is seated; confirm when it was taken out on purpose";
      readings.push_back(std::move(reading));
    }
  }
}

void EdacProvider::Load() {
  if (std::exchange(isLoaded_, true)) {
    return;
  }
  for (const auto& [id, text] : state_.Load()) {
    const std::size_t bar = text.find('|');
    if (auto history = ErrorHistory::FromText(std::string_view(text).substr(0, bar))) {
      histories_.emplace(id, std::move(*history));
      names_[id] = bar == std::string::npos ? "" : text.substr(bar + 1);
    }
  }
}

void EdacProvider::Save(std::vector<Reading>& readings) {
  StateFile::Entries entries;
  for (const auto& [id, history] : histories_) {
    entries[id] = history.Text() + "|" + names_[id];
  }
  state_.Save(entries);
  if (state_.Problem().empty()) {
    return;
  }
  for (Reading& reading : readings) {
    if (reading.reason.empty()) {
      reading.reason = "its errors cannot be kept over restarts: " + state_.Problem();
    }
  }
}

std::optional<std::int64_t> EdacProvider::Number(const std::string& path) {
  const FileResult<std::string> text = files_->ReadAttribute(path);
  return text ? ParseInteger(text.value) : std::nullopt;
}

bool EdacProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  const auto history = histories_.find(id);
  if (objectClass != ObjectClass::MemoryModule || history == histories_.end()) {
    return false;
  }
  // One that is still there gets a new, empty entry from its counters: those stay known.
  const bool isThere = names_.contains(id) && files_->List(kFolder + "/" + id).error == 0;
  if (isThere) {
    history->second.Confirm();
  } else {
    histories_.erase(history);
    names_.erase(id);
  }
  return true;
}

}  // namespace emstatus::host
