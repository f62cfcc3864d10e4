#include "host/providers/NvmeProvider.h"

#include <algorithm>
#include <map>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
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

void Group(std::vector<Reading>& readings, const std::vector<NvmeController>& controllers) {
  std::map<std::string, Redundancy> groups;
  for (std::size_t at = 0; at < readings.size(); ++at) {
    Redundancy& group = groups[controllers[at].subsystem];
    group.group = controllers[at].subsystem;
    group.needed = 1;
    ++group.members;
    group.present +=
        (readings[at].quality == Quality::Good && readings[at].condition == Condition::Good) ? 1 : 0;
  }
  for (std::size_t at = 0; at < readings.size(); ++at) {
    const Redundancy& group = groups[controllers[at].subsystem];
    if (!group.group.empty() && group.members > 1) {
      readings[at].redundancy = group;
    }
  }
}

}  // namespace

Reading JudgeNvme(const NvmeController& controller) {
  Reading reading;
  reading.objectClass = ObjectClass::StorageController;
  reading.id = controller.serial.empty() ? controller.name : controller.serial + "-" + controller.name;
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

NvmeProvider::NvmeProvider(std::unique_ptr<SystemFiles> files) : files_(std::move(files)) {}

std::vector<Reading> NvmeProvider::Read(const ReadContext&) {
  const FileResult<std::vector<std::string>> names = files_->List(kFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kFolder);
  }
  std::vector<Reading> readings;
  std::vector<NvmeController> controllers;
  for (const std::string& name : names.value) {
    NvmeController controller = ReadController(name);
    if (NumberAfter(name, "nvme") && !IsGone(controller.state.error)) {
      readings.push_back(JudgeNvme(controller));
      controllers.push_back(std::move(controller));
    }
  }
  Group(readings, controllers);
  return readings;
}

NvmeController NvmeProvider::ReadController(const std::string& name) {
  const auto text = [&](const char* attribute) {
    return std::string(Trimmed(files_->ReadAttribute(kFolder + "/" + name + "/" + attribute).value));
  };
  NvmeController controller;
  controller.name = name;
  controller.state = files_->ReadAttribute(kFolder + "/" + name + "/state");
  controller.model = text("model");
  controller.serial = text("serial");
  controller.subsystem = text("subsysnqn");
  controller.transport = text("transport");
  return controller;
}

}  // namespace emstatus::host
