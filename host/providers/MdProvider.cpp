#include "host/providers/MdProvider.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

constexpr std::string_view kMemberPrefix = "dev-";

std::string FolderOf(const std::string& array) {
  return "/sys/block/" + array + "/md";
}

}  // namespace

MdProvider::MdProvider(const FilesFactory& makeFiles, std::chrono::milliseconds patience)
    : files_(makeFiles()), reads_(makeFiles, patience) {}

std::vector<Reading> MdProvider::Read(const ReadContext& context) {
  std::map<std::string, DeviceReads<Sample>::Take> takes;
  for (const std::string& name : FindArrays()) {
    takes[name] = [name](SystemFiles& files) { return TakeSample(files, name); };
  }
  std::vector<Reading> readings;
  for (const auto& [name, answer] : reads_.Read(takes, context.now)) {
    if (!answer.sample) {
      Reading& reading = readings.emplace_back();
      reading.objectClass = ObjectClass::RaidArray;
      reading.id = reading.name = name;
      SetLate(reading, context.now - answer.waitingSince.value_or(context.now));
      continue;
    }
    if (IsGone(answer.sample->array.error)) {
      continue;
    }
    std::vector<Reading> told = Tell(answer.sample->array);
    SetAge(told, answer.takenAt, context.now, LateAfter());
    std::ranges::move(told, std::back_inserter(readings));
  }
  return readings;
}

std::vector<std::string> MdProvider::FindArrays() {
  const FileResult<std::vector<std::string>> names = files_->List("/sys/block");
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), "/sys/block");
  }
  std::vector<std::string> arrays;
  for (const std::string& name : names.value) {
    if (name.starts_with("md") && files_->List(FolderOf(name))) {
      arrays.push_back(name);
    }
  }
  return arrays;
}

MdProvider::Sample MdProvider::TakeSample(SystemFiles& files, const std::string& name) {
  const std::string folder = FolderOf(name);
  const auto text = [&](const char* attribute) {
    return files.ReadAttribute(folder + "/" + attribute).value;
  };
  Sample sample;
  // Watched before it is read, so that no change falls between the two.
  for (const char* attribute : {"/array_state", "/degraded", "/sync_action"}) {
    AddWatched(files, folder + attribute, sample.watched);
  }
  MdArray& array = sample.array;
  array.name = name;
  const FileResult<std::string> state = files.ReadAttribute(folder + "/array_state");
  array.state = state.value;
  array.error = state.error;
  array.level = text("level");
  array.metadata = text("metadata_version");
  array.disks = text("raid_disks");
  array.layout = text("layout");
  array.action = text("sync_action");
  array.completed = text("sync_completed");
  array.degraded = ParseInteger(text("degraded"));
  for (const std::string& entry : files.List(folder).value) {
    if (entry.starts_with(kMemberPrefix)) {
      AddWatched(files, folder + "/" + entry + "/state", sample.watched);
      MdMember member = TakeMember(files, folder + "/" + entry, entry.substr(kMemberPrefix.size()));
      if (!IsGone(member.error)) {
        array.members.push_back(std::move(member));
      }
    }
  }
  return sample;
}

MdMember MdProvider::TakeMember(SystemFiles& files, const std::string& folder, const std::string& name) {
  MdMember member;
  member.name = name;
  const FileResult<std::string> state = files.ReadAttribute(folder + "/state");
  member.error = state.error;
  for (const std::string_view word : Words(state.value, ',')) {
    member.states.emplace_back(word);
  }
  member.errors = ParseInteger(files.ReadAttribute(folder + "/errors").value);
  return member;
}

void MdProvider::AddWatched(SystemFiles& files, const std::string& path, Watched& watched) {
  if (const FileResult<int> descriptor = files.OpenForPoll(path)) {
    watched.emplace_back(new int(descriptor.value), [](const int* number) {
      close(*number);
      delete number;
    });
  }
}

std::vector<Reading> MdProvider::Tell(const MdArray& array) {
  std::vector<Reading> readings = {JudgeArray(array)};
  for (const MdMember& member : array.members) {
    const std::int64_t errors = member.errors.value_or(0);
    std::int64_t& old = oldErrors_.emplace(array.name + "/" + member.name, errors).first->second;
    old = std::min(old, errors);
    readings.push_back(JudgeMember(array, member, old));
    readings.back().redundancy = readings.front().redundancy;
  }
  return readings;
}

bool MdProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  return objectClass == ObjectClass::RaidMember && oldErrors_.erase(id) > 0;
}

void MdProvider::Watch(std::vector<pollfd>& descriptors) {
  for (const auto& [name, answer] : reads_.Collected()) {
    if (answer.sample) {
      for (const auto& descriptor : answer.sample->watched) {
        descriptors.push_back({*descriptor, POLLPRI, 0});
      }
    }
  }
}

}  // namespace emstatus::host
