#include "host/providers/PowerSupplyProvider.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <system_error>
#include <utility>

#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

const std::string kFolder = "/sys/class/power_supply";

// Of one that never answered, only its name says what it is.
ObjectClass ClassByName(const std::string& name) {
  const bool isBattery = name.starts_with("BAT") || name.find("battery") != std::string::npos;
  return isBattery ? ObjectClass::Battery : ObjectClass::PowerSupply;
}

}  // namespace

PowerSupplyProvider::PowerSupplyProvider(const FilesFactory& makeFiles, std::chrono::milliseconds patience)
    : files_(makeFiles()), reads_(makeFiles, patience) {}

PowerSupplyProvider::Sample PowerSupplyProvider::TakeSample(SystemFiles& files, const std::string& folder) {
  Sample sample;
  for (const std::string& name : PowerSupplyAttributes()) {
    FileResult<std::string> text = files.ReadAttribute(folder + "/" + name);
    if (!IsGone(text.error)) {
      sample.values.emplace(name, std::move(text));
    }
  }
  sample.hasChip = std::ranges::any_of(files.List(folder).value,
                                       [](const std::string& name) { return name.starts_with("hwmon"); });
  return sample;
}

std::vector<Reading> PowerSupplyProvider::Read(const ReadContext& context) {
  const FileResult<std::vector<std::string>> names = files_->List(kFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kFolder);
  }
  std::map<std::string, DeviceReads<Sample>::Take> takes;
  for (const std::string& name : names.value) {
    takes[name] = [folder = kFolder + "/" + name](SystemFiles& files) { return TakeSample(files, folder); };
  }
  std::vector<Reading> readings;
  std::set<std::string> mains;
  for (const auto& [name, answer] : reads_.Read(takes, context.now)) {
    if (!answer.sample) {
      readings.push_back(
          SilentReading(ClassByName(name), name, context.now - answer.waitingSince.value_or(context.now)));
      continue;
    }
    const PowerSupplyValues& values = answer.sample->values;
    if (values.empty() || FeedsADevice(values)) {
      continue;
    }
    if (IsMains(values)) {
      mains.insert(name);
    }
    std::vector<Reading> told = JudgePowerSupply(name, values, !answer.sample->hasChip);
    SetAge(told, answer.takenAt, context.now, LateAfter());
    std::ranges::move(told, std::back_inserter(readings));
  }
  GroupMains(readings, mains);
  return readings;
}

}  // namespace emstatus::host
