#pragma once

#include <atomic>
#include <cstdint>

#include <emstatus/CIExtensionModule.h>
#include <emstatus/HostInterface.h>

namespace emstatus {

/// What every extension module does alike: a default for each operation, the link back to the host, and
/// the traces of the commands that pass.
class CExtensionModule : public CIExtensionModule {
 public:
  bool GetModuleInfo(ModuleInfo* info) override;
  bool HostHook1() override { return true; }
  bool Start(HostInterface* host, std::uint32_t hostValue) override;
  bool Stop() override { return true; }
  void StartThreads() override {}
  void OnReply(HostCommand& command) override;
  /// Answers every request with "not supported" ("ST" 1).
  bool OnRequest(HostCommand& command) override;
  std::uint32_t HostHook2() override { return 0; }
  bool SetCabNr(std::uint32_t cabinet) override;
  std::uint32_t HostHook3() override { return 0; }
  bool SetServerSeList(const std::uint32_t* cabinets, std::uint32_t count) override;
  std::uint32_t OnNotification(std::uint32_t code, std::uint32_t parameter, void* data) override;
  const char* GetModuleName() override { return "EM_XXX"; }
  void HostHook4() override {}
  void HostHook5() override {}
  void HostHook6() override {}
  void HostHook7() override {}
  std::uint32_t HostHook8() override { return 0; }
  std::uint32_t HostHook9() override { return 0; }
  std::uint32_t HostHook10() override { return 0; }
  std::uint32_t HostHook11() override { return 0; }
  std::uint32_t OnModuleNotification(std::uint32_t code, std::uint32_t parameter, void* data) override;

 protected:
  static constexpr std::uint32_t kRequestTimeoutMs = 5000;

  /// The server's cabinet number as the host gave it last, 0 before; one for the whole process.
  static std::uint32_t ServerCabinetNumber() { return serverCabinet_; }

  bool IsAgentlessHost();
  bool IsRemoteHost();
  /// The name under which this host writes to an event log.
  const char* EventSourceName();

  /// Sends a request and waits for its answer. Without a host "ST" becomes 6; a missing "CA" becomes the
  /// server's cabinet. Returns what the host returns. [any thread]
  bool SendRequestToHost(HostCommand& command, std::uint32_t timeoutMs = kRequestTimeoutMs);
  /// The same for a module, whose id becomes "MI".
  bool SendRequestToModule(HostCommand& command, std::uint32_t moduleId);
  /// The same for a cabinet, which becomes "CA".
  bool SendRequestToCabinet(HostCommand& command, std::uint32_t cabinet);
  /// Sends a command without waiting; a missing "ST" becomes 0. Nothing without a host. [any thread]
  void SendCommandToHost(HostCommand& command);
  /// The same for an event. [any thread]
  void SendEventToHost(HostCommand& command);
  /// Tells the host that the module is ready; false without a host.
  bool SetModuleState(bool state);
  /// Tells the host that the module has begun to stop; false without a host.
  bool TellStopping();

  /// Trace a command as a request that came, as it is returned with its answer, or as a reply.
  void TraceRequest(const HostCommand& command);
  void TraceReturn(const HostCommand& command);
  void TraceReply(const HostCommand& command);

  const std::atomic<bool>& SwitchShutdown() const { return switchShutdown_; }
  void SetSwitchShutdown() { switchShutdown_ = true; }

 private:
  std::uint32_t HostKind();
  void Notice(std::uint32_t code);
  void TraceTagged(const char* suffix, const HostCommand& command);

  static std::atomic<std::uint32_t> serverCabinet_;

  /// Null until Start.
  std::atomic<HostInterface*> host_{nullptr};
  std::atomic<bool> switchShutdown_{false};
};

}  // namespace emstatus
