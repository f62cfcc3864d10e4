#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "config/CurrentConfiguration.h"
#include "config/Simulation.h"
#include "module/CExtensionModule.h"
#include "module/ThreadEnd.h"
#include "platform/CThread.h"
#include "platform/EventHandle.h"
#include "status/CabinetList.h"
#include "status/HostLink.h"
#include "status/StatusPolling.h"
#include "status/SystemScan.h"
#include "tree/ReplyHandler.h"
#include "tree/RequestHandler.h"
#include "tree/StatusTree.h"

namespace emstatus {

/// The module's name, and that of its configuration file.
inline constexpr const char* kModuleName = "EM_STATUS";

/// The status-monitoring module: reads the configuration, polls the host on a thread of its own, answers
/// requests from what it found.
class EM_Status final : public CExtensionModule, private HostLink {
 public:
  /// `stopTimeoutMs`: how long Stop waits for the polling thread by itself to end.
  explicit EM_Status(std::uint32_t stopTimeoutMs = 30000);
  /// Ends a polling thread that is still there.
  ~EM_Status() override;

  bool GetModuleInfo(ModuleInfo* info) override;
  bool Start(HostInterface* host, std::uint32_t hostValue) override;
  bool Stop() override;
  void StartThreads() override;
  void OnReply(HostCommand& command) override;
  bool OnRequest(HostCommand& command) override;
  bool SetCabNr(std::uint32_t cabinet) override;
  bool SetServerSeList(const std::uint32_t* cabinets, std::uint32_t count) override;
  std::uint32_t OnNotification(std::uint32_t code, std::uint32_t parameter, void* data) override;
  const char* GetModuleName() override { return kModuleName; }

 private:
  void SendRequest(HostCommand& command) override { SendRequestToHost(command); }
  void SendEvent(HostCommand& command) override { SendEventToHost(command); }
  std::uint32_t ServerCabinet() const override { return ServerCabinetNumber(); }

  bool Begin(HostInterface* host, std::uint32_t hostValue);
  bool ReadConfigurationFile();
  void End();
  void EndPolling();
  static void* PollingThread(void* module);
  void Poll();

  const std::uint32_t stopTimeoutMs_;

  // Each has its own lock
  CurrentConfiguration configuration_;
  Simulation simulation_;
  CabinetList cabinets_;
  StatusTree tree_;
  EventHandle wakeUp_;
  std::atomic<bool> raidRefresh_{false};

  // Used by the polling thread only
  SystemScan scan_;
  StatusPolling polling_;

  // Used by host threads
  const RequestHandler requests_;
  const ReplyHandler replies_;
  CThread thread_;
  bool threadCreated_ = false;
  ThreadEnd threadEnd_;
};

}  // namespace emstatus
