#include "host/module/ModuleSession.h"

#include "host/module/CommandReader.h"
#include "host/module/HostCodes.h"
#include "host/module/ModuleLibrary.h"
#include "host/module/OwnedCommand.h"

namespace emstatus::host {

ModuleSession::ModuleSession(CIExtensionModule& module, Host& host, Machine& machine)
    : module_(module), host_(host), machine_(machine) {
  module_.SetCabNr(kServerCabinet);
  const auto cabinets = machine_.ExtensionCabinets();
  module_.SetServerSeList(cabinets.data(), std::uint32_t(cabinets.size()));
  if (!module_.Start(&host_, 0)) {
    throw ModuleError(
        "the module cannot use its configuration (EM_STATUS.ini in the configuration folder).\n"
        "Run again with --trace 1 to see what it says.");
  }
}

ModuleSession::~ModuleSession() {
  module_.OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
  // A scan may be waiting for an answer; Stop() waits for the scan.
  host_.Close();
  machine_.Stop();
  module_.Stop();
}

void ModuleSession::WakeUp() {
  Request request;
  request.code = kMachineChanged;
  OwnedCommand command(request, kEventStatus);
  module_.OnReply(command.Get());
}

Answer ModuleSession::Ask(const Request& request) {
  OwnedCommand command(request);
  module_.OnRequest(command.Get());
  return {ReadNumber(command.Get(), "ST", kNoStatus), ReadData(command.Get())};
}

std::string ModuleSession::AskText(const Request& request) {
  const Answer answer = Ask(request);
  const bool isText = answer.status == 0 && answer.data && answer.data->is_string();
  return isText ? answer.data->get<std::string>() : std::string();
}

std::optional<std::string> ModuleSession::TreeText() {
  Request request;
  request.code = std::uint32_t(TreeCode::WholeTree);
  std::string text = AskText(request);
  return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::optional<std::uint32_t> ModuleSession::SystemStatus() {
  Request request;
  request.code = std::uint32_t(TreeCode::SystemStatus);
  const Answer answer = Ask(request);
  return answer.status == 0 ? NumberOf(answer.data) : std::nullopt;
}

std::optional<std::uint32_t> ModuleSession::ComponentStatus(std::uint32_t subsystem,
                                                            std::uint32_t component) {
  const Answer answer =
      Ask({std::uint32_t(TreeCode::ComponentStatus), subsystem, component, 0, std::nullopt});
  return answer.status == 0 ? NumberOf(answer.data) : std::nullopt;
}

std::string ModuleSession::SubsystemName(std::uint32_t subsystem) {
  return AskText({std::uint32_t(TreeCode::SubsystemName), subsystem, 0, 0, std::nullopt});
}

std::string ModuleSession::ComponentName(std::uint32_t subsystem, std::uint32_t component) {
  return AskText({std::uint32_t(TreeCode::ComponentName), subsystem, component, 0, std::nullopt});
}

std::string ModuleSession::SubsystemId(std::uint32_t subsystem) {
  return AskText({std::uint32_t(TreeCode::SubsystemId), subsystem, 0, 0, std::nullopt});
}

std::string ModuleSession::ComponentId(std::uint32_t subsystem, std::uint32_t component) {
  return AskText({std::uint32_t(TreeCode::ComponentId), subsystem, component, 0, std::nullopt});
}

std::string ModuleSession::InstanceBaseName(std::uint32_t subsystem, std::uint32_t component) {
  return AskText({std::uint32_t(TreeCode::InstanceBaseName), subsystem, component, 0, std::nullopt});
}

std::string ModuleSession::InstanceId(std::uint32_t subsystem, std::uint32_t component, std::uint32_t index,
                                      std::uint32_t cabinet) {
  return AskText(
      {std::uint32_t(TreeCode::InstanceId), subsystem << 16 | component, index, cabinet, std::nullopt});
}

std::string ModuleSession::InstanceName(std::uint32_t subsystem, std::uint32_t component, std::uint32_t index,
                                        std::uint32_t cabinet) {
  Request request{std::uint32_t(TreeCode::InstanceName), subsystem << 16 | component, index, cabinet,
                  std::nullopt};
  std::string name = AskText(request);
  if (name.empty()) {
    request.code = std::uint32_t(TreeCode::InstanceId);
    name = AskText(request);
  }
  return name;
}

}  // namespace emstatus::host
