#include "module/CExtensionModule.h"

#include <string>

#include "data/Command.h"
#include "module/CommandTrace.h"
#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

constexpr std::uint32_t kNoHost = 6;
constexpr std::uint32_t kNotSupported = 1;
constexpr std::uint32_t kTraceLevel = 2;

enum HostKindValue : std::uint32_t { kAgentless = 5, kRemote = 8, kAgentlessRemote = 10 };

void SetNumber(HostCommand& command, const char* name, std::uint32_t number) {
  if (CommandValue* current = EnsureCurrentCommand(command)) {
    SetMember(*current, name, OwnedValue::UInt32(number));
  }
}

void EnsureStatus(HostCommand& command) {
  if (!HasMember(command, "ST")) SetStatus(command, 0);
}

}  // namespace

std::atomic<std::uint32_t> CExtensionModule::serverCabinet_{0};

bool CExtensionModule::GetModuleInfo(ModuleInfo*) {
  return false;
}

bool CExtensionModule::Start(HostInterface* host, std::uint32_t) {
  host_ = host;
  if (debugClient.Enabled()) {
    const char* source = EventSourceName();
    EM_TRACE(4, "\n%-20s: Register event log source \"%s\" ...", GetModuleName(), source);
  }
  const char* source = EventSourceName();
  EM_TRACE(4, "\n%-20s: ... event log source \"%s\" registered", GetModuleName(), source);
  return true;
}

void CExtensionModule::OnReply(HostCommand&) {}

bool CExtensionModule::OnRequest(HostCommand& command) {
  SetStatus(command, kNotSupported);
  return false;
}

bool CExtensionModule::SetCabNr(std::uint32_t cabinet) {
  serverCabinet_ = cabinet;
  EM_TRACE(2, "\n\n%-20s: ## Server cabinet number = %d ##\n", GetModuleName(), static_cast<int>(cabinet));
  return true;
}

bool CExtensionModule::SetServerSeList(const std::uint32_t*, std::uint32_t) {
  return false;
}

std::uint32_t CExtensionModule::OnNotification(std::uint32_t code, std::uint32_t parameter, void* data) {
  EM_TRACE(2, "\n\n%-20s: ## NOTIFY: Code = 0Xx%02X, param = 0x%08X", GetModuleName(), code, parameter);
  Notice(code);
  EM_TRACE(4, "\n%-20s:   call OnModuleNotification()...", GetModuleName());
  const std::uint32_t result = OnModuleNotification(code, parameter, data);
  EM_TRACE(4, "\n%-20s:   ... OnModuleNotification() completed", GetModuleName());
  return result;
}

std::uint32_t CExtensionModule::OnModuleNotification(std::uint32_t, std::uint32_t, void*) {
  return 0;
}

void CExtensionModule::Notice(std::uint32_t code) {
  const char* name = GetModuleName();
  switch (code) {
    case HWN_SWITCH_SHUTDOWN:
      EM_TRACE(1, "\n%-20s: *** HWN_SWITCH_SHUTDOWN *** \n", name);
      EM_TRACE(3, "\n%-20s: -> SWITCH shutdown notification, set SwitchShutdown flag", name);
      SetSwitchShutdown();
      break;
    case HWN_SWITCH_REQUEST_ENABLED:
      EM_TRACE(1, "\n%-20s: *** HWN_SWITCH_REQUEST_ENABLED *** \n", name);
      EM_TRACE(3, "\n%-20s: -> SWITCH start completed (all layers started) - requests enabled", name);
      break;
    case HWN_SYSTEM_SHUTDOWN:
      EM_TRACE(1, "\n%-20s: *** HWN_SYSTEM_SHUTDOWN *** \n", name);
      EM_TRACE(2, "\n%-20s: -> System shutdown", name);
      break;
    case HWN_POWERSTATE_SUSPEND:
      EM_TRACE(1, "\n%-20s: *** HWN_POWERSTATE_SUSPEND *** \n", name);
      break;
    case HWN_POWERSTATE_STANDBY:
      EM_TRACE(1, "\n%-20s: *** HWN_POWERSTATE_STANDBY *** \n", name);
      break;
    case HWN_POWERSTATE_RESUME:
      EM_TRACE(1, "\n%-20s: *** HWN_POWERSTATE_RESUME *** \n", name);
      break;
    case HWN_POWERSTATE_AC_OFFLINE:
      EM_TRACE(1, "\n%-20s: *** HWN_POWERSTATE_AC_OFFLINE *** \n", name);
      break;
    case HWN_POWERSTATE_AC_ONLINE:
      EM_TRACE(1, "\n%-20s: *** HWN_POWERSTATE_AC_ONLINE *** \n", name);
      break;
    default:
      break;
  }
}

std::uint32_t CExtensionModule::HostKind() {
  HostInterface* host = host_;
  return host == nullptr ? 0 : host->HostKind(this);
}

bool CExtensionModule::IsAgentlessHost() {
  const std::uint32_t kind = HostKind();
  return kind == kAgentless || kind == kAgentlessRemote;
}

bool CExtensionModule::IsRemoteHost() {
  const std::uint32_t kind = HostKind();
  return kind == kRemote || kind == kAgentlessRemote;
}

const char* CExtensionModule::EventSourceName() {
  return HostKind() == kAgentless ? "Talvern Agentless Service" : "Talvern Host Warden";
}

bool CExtensionModule::SendRequestToHost(HostCommand& command, std::uint32_t timeoutMs) {
  HostInterface* host = host_;
  if (host == nullptr) {
    SetStatus(command, kNoHost);
    return false;
  }
  if (!HasMember(command, "CA")) SetNumber(command, "CA", ServerCabinetNumber());
  return host->SendRequest(this, command, timeoutMs);
}

bool CExtensionModule::SendRequestToModule(HostCommand& command, std::uint32_t moduleId) {
  SetNumber(command, "MI", moduleId);
  return SendRequestToHost(command);
}

bool CExtensionModule::SendRequestToCabinet(HostCommand& command, std::uint32_t cabinet) {
  SetNumber(command, "CA", cabinet);
  return SendRequestToHost(command);
}

void CExtensionModule::SendCommandToHost(HostCommand& command) {
  HostInterface* host = host_;
  if (host == nullptr) return;
  EnsureStatus(command);
  host->SendCommand(this, command, 0);
}

void CExtensionModule::SendEventToHost(HostCommand& command) {
  HostInterface* host = host_;
  if (host == nullptr) return;
  EnsureStatus(command);
  host->SendEvent(this, command);
}

bool CExtensionModule::SetModuleState(bool state) {
  HostInterface* host = host_;
  return host != nullptr && host->SetModuleState(this, state);
}

bool CExtensionModule::TellStopping() {
  HostInterface* host = host_;
  return host != nullptr && host->ModuleStopping(this);
}

void CExtensionModule::TraceRequest(const HostCommand& command) {
  TraceTagged(" (REQ)", command);
}

void CExtensionModule::TraceReturn(const HostCommand& command) {
  TraceTagged(" (RET)", command);
}

void CExtensionModule::TraceReply(const HostCommand& command) {
  TraceTagged(" (RPL)", command);
}

void CExtensionModule::TraceTagged(const char* suffix, const HostCommand& command) {
  if (debugClient.PassesEnabled(kTraceLevel)) {
    TraceCommand(kTraceLevel, std::string(GetModuleName()) + suffix, command);
  }
}

}  // namespace emstatus
