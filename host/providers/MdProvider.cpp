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
  const auto& answers = reads_.Read(Takes(), context.now);
  usedOf_.clear();
  for (const auto& [name, answer] : answers) {
    if (answer.sample && !answer.sample->array.ContainerName().empty()) {
      for (const MdMember& member : answer.sample->array.members) {
        usedOf_[std::string(answer.sample->array.ContainerName())].insert(member.name);
      }
    }
  }
  std::vector<Reading> readings;
  for (const auto& [name, answer] : answers) {
    if (!answer.sample) {
      Reading& reading = readings.emplace_back();
      reading.objectClass = ObjectClass::RaidArray;
      reading.id = reading.name = name;
      SetLate(reading, context.now - answer.waitingSince.value_or(context.now));
      continue;
    }
    const MdArray& array = answer.sample->array;
    // A clear one is a name without an array: not made yet, or stopped.
    if (IsGone(array.error) || array.state == "clear") {
      continue;
    }
    std::vector<Reading> told = Tell(array, answer.takenAt);
    SetAge(told, answer.takenAt, context.now, LateAfter());
    std::ranges::move(told, std::back_inserter(readings));
  }
  std::erase_if(memories_, [&](const auto& entry) { return !answers.contains(entry.first); });
  return readings;
}

std::map<std::string, DeviceReads<MdProvider::Sample>::Take> MdProvider::Takes() {
  const FileResult<std::vector<std::string>> names = files_->List("/sys/block");
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), "/sys/block");
  }
  std::map<std::string, DeviceReads<Sample>::Take> takes;
  for (const std::string& name : names.value) {
    if (name.starts_with("md")) {
      takes[name] = [name](SystemFiles& files) { return TakeSample(files, name); };
    }
  }
  return takes;
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
  array.lastAction = text("last_sync_action");
  array.completed = text("sync_completed");
  array.policy = text("consistency_policy");
  array.degraded = ParseInteger(text("degraded"));
  array.mismatches = ParseInteger(text("mismatch_cnt"));
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
  member.slot = NumberAfter(files.ReadAttribute(folder + "/slot").value, "");
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

std::vector<Reading> MdProvider::Tell(const MdArray& array, std::chrono::steady_clock::time_point now) {
  MdMemory& memory = memories_[array.name];
  std::vector<Reading> readings = {JudgeArray(array, memory, now)};
  const std::set<std::string>& used = usedOf_[array.name];
  for (const MdMember& member : array.members) {
    if (!array.IsContainer() || !used.contains(member.name)) {
      readings.push_back(JudgeMember(array, member, memory));
      readings.back().redundancy = readings.front().redundancy;
    }
  }
  return readings;
}

bool MdProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  const std::size_t slash = id.find('/');
  const auto memory = memories_.find(id.substr(0, slash));
  if (memory == memories_.end()) {
    return false;
  }
  if (objectClass == ObjectClass::RaidArray) {
    return std::exchange(memory->second.mostDevices, 0) > 0;
  }
  return slash != std::string::npos && memory->second.oldErrors.erase(id.substr(slash + 1)) > 0;
}

void MdProvider::Watch(std::vector<pollfd>& descriptors) {
  for (const auto& [name, answer] : reads_.Collected()) {
    // One that owes an answer would go on calling for it.
    if (answer.sample && !answer.waitingSince) {
      for (const auto& descriptor : answer.sample->watched) {
        descriptors.push_back({*descriptor, POLLPRI, 0});
      }
    }
  }
}

}  // namespace emstatus::host
