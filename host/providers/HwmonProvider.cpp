#include "host/providers/HwmonProvider.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr char kClass[] = "/sys/class/hwmon";
constexpr minutes kRescan{1};
constexpr hours kSearch{1};

bool IsGoneAltogether(const std::map<std::string, FileResult<std::string>>& values) {
  return std::ranges::all_of(values, [](const auto& value) { return IsGone(value.second.error); });
}

}  // namespace

HwmonRhythm RhythmOf(HwmonKind kind) {
  switch (kind) {
    case HwmonKind::Nvme:
      return {minutes(1), hours(1)};
    case HwmonKind::Sata:
      return {minutes(10), hours(6)};
    case HwmonKind::Board:
      break;
  }
  return {seconds(5), minutes(1)};
}

HwmonProvider::HwmonProvider(const FilesFactory& makeFiles, HwmonKind kind,
                             std::chrono::milliseconds patience)
    : kind_(kind), files_(makeFiles()), scan_(makeFiles, kind, patience), reads_(makeFiles, patience) {}

std::string_view HwmonProvider::Name() const {
  switch (kind_) {
    case HwmonKind::Nvme:
      return "nvme sensors";
    case HwmonKind::Sata:
      return "sata sensors";
    case HwmonKind::Board:
      break;
  }
  return "sensors";
}

std::vector<Reading> HwmonProvider::Read(const ReadContext& context) {
  // Somebody in a hurry does not make the drives answer more often.
  const bool isNew = Rescan(context.now);
  const bool isDue =
      kind_ == HwmonKind::Board || isNew || !askedAt_ || context.now - *askedAt_ >= Interval() / 2;
  if (isDue) {
    askedAt_ = context.now;
  }
  JudgeSlow(context.now);
  hasMoved_ = false;
  std::vector<Reading> readings =
      TellAll(isDue ? reads_.Read(Takes(context.now), context.now) : reads_.Collected(), context.now);
  if (hasMoved_) {
    // A driver that was loaded anew is no loss: look where its chips are now.
    scannedAt_.reset();
    if (Rescan(context.now)) {
      readings = TellAll(reads_.Read(Takes(context.now), context.now), context.now);
    }
  }
  return readings;
}

bool HwmonProvider::Rescan(Clock::time_point now) {
  FileResult<std::vector<std::string>> names = files_->List(kClass);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kClass);
  }
  const bool isDue = !scannedAt_ || now - *scannedAt_ >= kRescan || scan_.IsWaiting();
  if (!isDue && names.value == classNames_) {
    return false;
  }
  // Disks are always linked from the class, where there is one.
  const bool search =
      (kind_ == HwmonKind::Board || names.value.empty()) && (!searchedAt_ || now - *searchedAt_ >= kSearch);
  std::map<std::string, Chip> chips;
  bool isNew = false;
  for (HwmonChip& found : scan_.Run(names.value, search, now)) {
    const std::string id = found.id;
    const auto known = chips_.find(id);
    Chip chip = known == chips_.end() ? Chip{} : std::move(known->second);
    if (chip.found.look.folder != found.look.folder) {
      chip.settledAt.reset();
      isNew = true;
    }
    chip.found = std::move(found);
    chips.emplace(id, std::move(chip));
  }
  chips_ = std::move(chips);
  classNames_ = std::move(names.value);
  scannedAt_ = now;
  searchedAt_ = search ? now : searchedAt_;
  return isNew;
}

std::map<std::string, DeviceReads<HwmonProvider::Sample>::Take> HwmonProvider::Takes(
    Clock::time_point now) const {
  std::map<std::string, DeviceReads<Sample>::Take> takes;
  for (const auto& [id, chip] : chips_) {
    if (chip.found.silentSince) {
      continue;
    }
    const bool withSettled = !chip.settledAt || now - *chip.settledAt >= RhythmOf(kind_).settled;
    takes[id] = [look = chip.found.look, withSettled](SystemFiles& files) {
      return TakeSample(files, look, withSettled);
    };
  }
  return takes;
}

HwmonProvider::Sample HwmonProvider::TakeSample(SystemFiles& files, const HwmonLook& chip, bool withSettled) {
  Sample sample;
  sample.withSettled = withSettled;
  if (!chip.name.empty()) {
    sample.name = Trimmed(files.ReadAttribute(chip.nameFile).value);
  }
  for (const auto& [key, items] : chip.channels) {
    const std::string prefix = key.Text();
    const std::optional<std::string> value = ValueItem(items);
    // The value before the alarms: an alarm that comes between the two is then not seen without its cause.
    if (value) {
      const std::string name = prefix + "_" + *value;
      sample.values[name] = files.ReadAttribute(chip.folder + "/" + name);
      if (key.type->objectClass == ObjectClass::Fan && sample.values[name].value == "0") {
        const std::string control = "pwm" + std::to_string(key.index);
        sample.values[prefix + "_pwm"] = files.ReadAttribute(chip.folder + "/" + control);
      }
    }
    for (const std::string& item : items) {
      if (item != "input" && item != "average" && (withSettled || !IsSettled(item))) {
        const std::string name = prefix + "_" + item;
        sample.values[name] = files.ReadAttribute(chip.folder + "/" + name);
      }
    }
  }
  return sample;
}

void HwmonProvider::JudgeSlow(Clock::time_point now) {
  for (const auto& [id, answer] : reads_.Collected()) {
    const auto chip = chips_.find(id);
    if (answer.sample && chip != chips_.end() && chip->second.judgedAt != answer.takenAt) {
      Tell(chip->second, answer, now);
    }
  }
}

std::vector<Reading> HwmonProvider::TellAll(const std::map<std::string, DeviceAnswer<Sample>>& answers,
                                            Clock::time_point now) {
  std::vector<Reading> readings;
  for (auto& [id, chip] : chips_) {
    if (chip.found.silentSince) {
      // Of what kind its sensors are is not known either.
      readings.push_back(
          SilentReading(ObjectClass::Temperature, chip.found.title, now - *chip.found.silentSince));
    } else if (const auto answer = answers.find(id); answer != answers.end()) {
      std::ranges::move(Tell(chip, answer->second, now), std::back_inserter(readings));
    }
  }
  return readings;
}

std::vector<Reading> HwmonProvider::Tell(Chip& chip, const DeviceAnswer<Sample>& answer,
                                         Clock::time_point now) {
  std::vector<Reading> readings;
  if (!answer.sample) {
    for (const auto& [key, items] : chip.found.look.channels) {
      Reading reading;
      Describe(reading, chip, key);
      SetLate(reading, now - answer.waitingSince.value_or(now));
      readings.push_back(std::move(reading));
    }
    return readings;
  }
  const Sample& sample = *answer.sample;
  if ((!sample.name.empty() && sample.name != chip.found.look.name) || IsGoneAltogether(sample.values)) {
    hasMoved_ = true;
    return readings;
  }
  chip.judgedAt = answer.takenAt;
  readings = JudgeSample(chip, sample, answer.takenAt);
  SetAge(readings, answer.takenAt, now, LateAfter());
  return readings;
}

std::vector<Reading> HwmonProvider::JudgeSample(Chip& chip, const Sample& sample, Clock::time_point takenAt) {
  if (sample.withSettled) {
    chip.settledAt = takenAt;
    chip.settled.clear();
  }
  std::map<HwmonChannelKey, HwmonValues> channels;
  for (const auto& [key, items] : chip.found.look.channels) {
    const std::string prefix = key.Text() + "_";
    for (const std::string& item : items) {
      const auto value = sample.values.find(prefix + item);
      if (value != sample.values.end() && IsSettled(item)) {
        chip.settled[prefix + item] = value->second;
      }
      const auto settled = chip.settled.find(prefix + item);
      if (value != sample.values.end() || settled != chip.settled.end()) {
        channels[key][item] = value != sample.values.end() ? value->second : settled->second;
      }
    }
    if (const auto control = sample.values.find(prefix + "pwm");
        control != sample.values.end() && control->second) {
      channels[key]["pwm"] = control->second;
    }
  }
  std::vector<Reading> readings;
  for (const auto& [key, values] : channels) {
    if (auto reading = JudgeChannel(key, values, chip.memories[key], takenAt)) {
      Describe(*reading, chip, key);
      readings.push_back(std::move(*reading));
    }
  }
  DistrustTachometers(readings, chip.found.title);
  return readings;
}

void HwmonProvider::Describe(Reading& reading, const Chip& chip, const HwmonChannelKey& key) const {
  const bool isDisk = kind_ != HwmonKind::Board && key.type->objectClass == ObjectClass::Temperature;
  reading.objectClass = isDisk ? ObjectClass::DiskTemperature : key.type->objectClass;
  reading.id = chip.found.id + "/" + key.Text();
  reading.name = chip.found.title + " " + key.Text();
  const auto label = chip.settled.find(key.Text() + "_label");
  if (label != chip.settled.end() && !Trimmed(label->second.value).empty()) {
    reading.name += " (" + std::string(Trimmed(label->second.value)) + ")";
  }
}

bool HwmonProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  const std::size_t slash = id.rfind('/');
  const auto chip = chips_.find(id.substr(0, slash));
  if (slash == std::string::npos || chip == chips_.end()) {
    return false;
  }
  for (auto& [key, memory] : chip->second.memories) {
    if (key.Text() != id.substr(slash + 1)) {
      continue;
    }
    if (objectClass == ObjectClass::Intrusion) {
      return bool(files_->WriteAttribute(chip->second.found.look.folder + "/" + key.Text() + "_alarm", "0"));
    }
    const bool isHeld = !memory.alarms.empty() || !memory.passed.empty();
    memory.alarms.clear();
    memory.passed.clear();
    return isHeld;
  }
  return false;
}

}  // namespace emstatus::host
