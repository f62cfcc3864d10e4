#include "module/EM_Status.h"

#include <cerrno>
#include <cstring>

#include <emstatus/ModuleInfo.h>

#include "config/ConfigurationReader.h"
#include "data/Command.h"
#include "lookup/ModuleConfigFile.h"
#include "module/HostEdge.h"
#include "platform/CDebugClient.h"
#include "platform/CRegistry.h"
#include "status/HostQuery.h"

namespace emstatus {
namespace {

constexpr int kPollingPriority = 63;

/// The operation codes of the status tree are 0x2300 to 0x233F.
constexpr std::uint32_t kOperationMask = 0xFFFFFFC0;
constexpr std::uint32_t kStatusTreeOperations = 0x2300;

void TraceSeparator() {
  EM_TRACE(1,
           "\n------------------------------------------------------------------------------------------\n");
}

}  // namespace

EM_Status::EM_Status(std::uint32_t stopTimeoutMs)
    : stopTimeoutMs_(stopTimeoutMs),
      scan_({.host = *this,
             .configuration = configuration_,
             .simulation = simulation_,
             .cabinets = cabinets_,
             .tree = tree_,
             .switchShutdown = SwitchShutdown(),
             .raidRefresh = raidRefresh_}),
      polling_(configuration_, simulation_, scan_, wakeUp_, SwitchShutdown()),
      requests_(configuration_, tree_, wakeUp_,
                [this](const RequestRecord& request) { return HostQuery(*this).QueryCommand(request); }),
      replies_(wakeUp_, raidRefresh_) {
  wakeUp_.Create(false, true);
}

EM_Status::~EM_Status() {
  if (threadCreated_) EndPolling();
}

bool EM_Status::GetModuleInfo(ModuleInfo* info) {
  if (info == nullptr) return false;
  ModuleInfo filled;
  std::memcpy(&filled.size, info, sizeof filled.size);
  if (filled.size < sizeof filled) return false;
  std::memcpy(&filled, info, sizeof filled);
  filled.capabilities8 |= 3;
  filled.capabilities21 |= 3;
  filled.number26 = 100;
  filled.number42 = 2;
  std::strncpy(filled.name, kModuleName, sizeof filled.name);
  filled.word142 = 0;
  filled.byte144 = filled.byte145 = 0;
  std::strncpy(filled.description, "STATUS extension module", sizeof filled.description);
  filled.word242 = 0;
  filled.byte244 = filled.byte245 = 0;
  std::memcpy(info, &filled, sizeof filled);
  return true;
}

bool EM_Status::Start(HostInterface* host, std::uint32_t hostValue) {
  return AtHostEdge("Start", false, [&] { return Begin(host, hostValue); });
}

bool EM_Status::Begin(HostInterface* host, std::uint32_t hostValue) {
  TraceSeparator();
  EM_TRACE(1, "\n### Starting module %s ###\n", GetModuleName());
  CExtensionModule::Start(host, hostValue);
  if (cabinets_.Copy().empty()) {
    EM_TRACE(2, "\nEM_STATUS (Start)   : ## Server cabinet number = %d",
             static_cast<int>(ServerCabinetNumber()));
    cabinets_.Append(ServerCabinetNumber());
  }
  if (simulation_.BeginWithFile()) {
    EM_TRACE(
        1,
        "\n\n**************************************************************************************************");
    EM_TRACE(
        1,
        "\nEM_STATUS (Start)   : ## Error condition simulation file available - consider during status query!");
    EM_TRACE(
        1,
        "\n**************************************************************************************************\n");
  } else {
    EM_TRACE(4, "\nEM_STATUS (Start)   : No error simulation file available");
  }
  const bool started = ReadConfigurationFile();
  if (started) SetModuleState(false);
  EM_TRACE(1, "\n\nEM_STATUS (Start)   : ### Start module %s ###",
           started ? "completed successfully" : "FAILED!");
  TraceSeparator();
  return started;
}

bool EM_Status::ReadConfigurationFile() {
  ConfigurationReader reader(
      [this](std::string& path) {
        CRegistry registry;
        return ModuleConfigFile(registry).GetModuleConfigFile(GetModuleName(), path, "ini");
      },
      [this] { return SwitchShutdown().load(); });
  StatusConfiguration configuration;
  if (!reader.ReadConfigurationFile(configuration)) return false;
  tree_.EnsureNode(kRootId);
  configuration_.Replace(std::move(configuration));
  return true;
}

bool EM_Status::Stop() {
  return AtHostEdge("Stop", true, [this] {
    End();
    return true;
  });
}

void EM_Status::End() {
  TraceSeparator();
  EM_TRACE(1, "\n### Stopping module %s ###\n", GetModuleName());
  TellStopping();
  CExtensionModule::Stop();
  wakeUp_.Set();
  EM_TRACE(3, "\nEM_STATUS           : Wait until polling thread is being terminated...");
  // The thread's own wait has no limit, so that the end of its routine is awaited first.
  if (!threadEnd_.Wait(stopTimeoutMs_) || !thread_.WaitForTermination(stopTimeoutMs_)) {
    EM_TRACE(
        1,
        "\n\nEM_STATUS           : ## ERROR! status polling thread could not be terminated! Give up after 30 seconds!\n");
    EndPolling();
    EM_TRACE(3, "\nEM_STATUS           ... thread KILLED!");
  }
  EM_TRACE(3, "\nEM_STATUS           ... polling thread terminated!");
  EM_TRACE(1, "\n\n### Stop of module %s completed %s ###", GetModuleName(), "successfully");
  TraceSeparator();
}

void EM_Status::EndPolling() {
  if (!threadEnd_.Wait(0)) {
    SetSwitchShutdown();
    wakeUp_.Set();
  }
  thread_.Kill();
}

void EM_Status::StartThreads() {
  AtHostEdge("StartThreads", false, [this] {
    if (SwitchShutdown()) return false;
    if (!threadEnd_.Wait(0)) {
      EM_TRACE(1, "\n\nEM_STATUS           : ## WARNING! Status polling thread is running already!");
      return false;
    }
    EM_TRACE(3, "\n\nEM_STATUS           : Start status polling thread...");
    threadEnd_.Begin();
    if (thread_.Start(&EM_Status::PollingThread, this, kPollingPriority, false, 0, true)) {
      threadCreated_ = true;
      return true;
    }
    const int error = errno;
    threadEnd_.Finish();
    EM_TRACE(1, "\n\nEM_STATUS           : ## ERROR 0x%X! Failed to start status polling thread (%s)!",
             static_cast<unsigned>(error), std::strerror(error));
    return false;
  });
}

void* EM_Status::PollingThread(void* module) {
  static_cast<EM_Status*>(module)->Poll();
  return nullptr;
}

void EM_Status::Poll() {
  try {
    polling_.Run();
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
    EM_TRACE(1, "\n\n##############################################################################");
    EM_TRACE(1, "\n####                   Exception in StatusPolling Thread !!               ####");
    EM_TRACE(1, "\n##############################################################################\n");
  }
  EM_TRACE(1, "THREAD_RETURN: ## INFO: Thread = 0x%08X exited, Return = 0x%08x##\n",
           static_cast<unsigned>(pthread_self()), 0U);
  threadEnd_.Finish();
}

void EM_Status::OnReply(HostCommand& command) {
  AtHostEdge("OnReply", false, [&] {
    TraceReply(command);
    replies_.OnReply(command);
    return true;
  });
}

bool EM_Status::OnRequest(HostCommand& command) {
  return AtHostEdge("OnRequest", false, [&] {
    const bool traced = (GetInt(command, "OC", 0) & kOperationMask) == kStatusTreeOperations;
    if (traced) TraceRequest(command);
    const bool handled = requests_.OnRequest(command);
    if (traced) TraceReturn(command);
    return handled;
  });
}

bool EM_Status::SetCabNr(std::uint32_t cabinet) {
  return AtHostEdge("SetCabNr", false, [&] {
    CExtensionModule::SetCabNr(cabinet);
    EM_TRACE(2, "\nEM_STATUS (SetCabNr): ## Server cabinet number = %d", static_cast<int>(cabinet));
    cabinets_.Append(cabinet);
    return true;
  });
}

bool EM_Status::SetServerSeList(const std::uint32_t* cabinets, std::uint32_t count) {
  return AtHostEdge("SetServerSeList", false, [&] {
    const std::uint32_t used = cabinets == nullptr ? 0 : count & 0xFF;
    EM_TRACE(
        2,
        "\nEM_STATUS (SetSeLst): SetServerSeList(): receiving storage extension cabinets list from SWITCH, NumberSeCabinets=%d",
        static_cast<int>(used));
    for (std::uint32_t i = 0; i < used; ++i) {
      EM_TRACE(2, "\nEM_STATUS (SetSeLst):   - adding extension cabinet %u", cabinets[i]);
      cabinets_.Append(cabinets[i]);
    }
    return true;
  });
}

std::uint32_t EM_Status::OnNotification(std::uint32_t code, std::uint32_t parameter, void* data) {
  return AtHostEdge("OnNotification", std::uint32_t{0},
                    [&] { return CExtensionModule::OnNotification(code, parameter, data); });
}

}  // namespace emstatus
