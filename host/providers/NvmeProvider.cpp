#include "host/providers/NvmeProvider.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

const std::string kFolder = "/sys/class/nvme";

struct StateRow {
  const char* word;
  Condition condition;
  const char* reason;
};

constexpr StateRow kStates[] = {
    {"live", Condition::Good, ""},
    {"new", Condition::Warning, "not ready yet"},
    {"resetting", Condition::Warning, "is being reset after an error or a time-out"},
    {"connecting", Condition::Warning, "the connection is lost and is being made anew"},
    {"deleting", Condition::Warning, "is being taken away"},
    {"deleting (no IO)", Condition::Critical, "is being taken away and does no I/O"},
    {"dead", Condition::Critical, "does not answer any more and was given up"},
};

NvmeController ReadController(SystemFiles& files, const std::string& name) {
  const auto text = [&](const char* attribute) {
    return std::string(Trimmed(files.ReadAttribute(kFolder + "/" + name + "/" + attribute).value));
  };
  NvmeController controller;
  controller.name = name;
  controller.state = files.ReadAttribute(kFolder + "/" + name + "/state");
  controller.model = text("model");
  controller.serial = text("serial");
  controller.subsystem = text("subsysnqn");
  controller.transport = text("transport");
  controller.number = text("cntlid");
  controller.address = text("address");
  return controller;
}

// Does not change when the controllers are found in another order.
std::string IdentityOf(const NvmeController& controller) {
  if (controller.serial.empty()) {
    return controller.name;
  }
  const bool isLocal = controller.transport.empty() || controller.transport == "pcie";
  const std::string& which = isLocal ? controller.number : controller.address;
  return controller.serial + (which.empty() ? "" : "-" + which);
}

// A controller's reading and the subsystem that it leads to.
using Told = std::pair<Reading, std::string>;

void Group(std::vector<Told>& all) {
  std::map<std::string, Redundancy> groups;
  for (const auto& [reading, subsystem] : all) {
    Redundancy& group = groups[subsystem];
    group.group = subsystem;
    group.needed = 1;
    ++group.members;
    group.present += (reading.quality == Quality::Good && reading.condition == Condition::Good) ? 1 : 0;
  }
  for (auto& [reading, subsystem] : all) {
    const Redundancy& group = groups[subsystem];
    if (!group.group.empty() && group.members > 1) {
      reading.redundancy = group;
    }
  }
}

}  // namespace

Reading JudgeNvme(const NvmeController& controller) {
  Reading reading;
  reading.objectClass = ObjectClass::StorageController;
  reading.id = IdentityOf(controller);
  reading.name = controller.name + (controller.model.empty() ? "" : " (" + controller.model + ")");
  if (!controller.state) {
    SetUnread(reading, "state", controller.state.error);
    return reading;
  }
  reading.quality = Quality::Good;
  const std::string& state = controller.state.value;
  const auto* row = std::ranges::find_if(kStates, [&](const StateRow& one) { return state == one.word; });
  if (row == std::end(kStates)) {
    reading.condition = Condition::Warning;
    reading.reason = "its state is \"" + state + "\", live expected";
  } else if (row->condition != Condition::Good) {
    reading.condition = row->condition;
    reading.reason = std::string(row->reason) + " (its state is " + state + ", live expected)";
  }
  if (reading.condition != Condition::Good) {
    reading.advice = controller.transport.empty() || controller.transport == "pcie"
                         ? "look at the kernel log; seat the drive anew or replace it when this stays"
                         : "look at the network to the storage and at the storage itself";
  }
  return reading;
}

NvmeProvider::NvmeProvider(const FilesFactory& makeFiles, std::chrono::milliseconds patience)
    : files_(makeFiles()), reads_(makeFiles, patience) {}

std::vector<Reading> NvmeProvider::Read(const ReadContext& context) {
  const FileResult<std::vector<std::string>> names = files_->List(kFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kFolder);
  }
  std::map<std::string, DeviceReads<NvmeController>::Take> takes;
  for (const std::string& name : names.value) {
    if (NumberAfter(name, "nvme")) {
      takes[name] = [name](SystemFiles& files) { return ReadController(files, name); };
    }
  }
  std::vector<Told> told;
  for (const auto& [name, answer] : reads_.Read(takes, context.now)) {
    if (!answer.sample) {
      told.emplace_back(SilentReading(ObjectClass::StorageController, name,
                                      context.now - answer.waitingSince.value_or(context.now)),
                        "");
    } else if (!IsGone(answer.sample->state.error)) {
      std::vector<Reading> one = {JudgeNvme(*answer.sample)};
      SetAge(one, answer.takenAt, context.now, LateAfter());
      told.emplace_back(std::move(one.front()), answer.sample->subsystem);
    }
  }
  Group(told);
  std::vector<Reading> readings;
  std::ranges::transform(told, std::back_inserter(readings), [](Told& one) { return std::move(one.first); });
  return readings;
}

}  // namespace emstatus::host
