#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

#include <emstatus/HostInterface.h>

#include "host/machine/Machine.h"
#include "host/module/NoticeQueue.h"
#include "host/module/TrafficObserver.h"

namespace emstatus::host {

/// The host as the module sees it: answers its requests from the machine, takes its events and the value of
/// the error LED, and passes what happens to the main thread. [every operation on any thread, several at
/// once]
class Host final : public HostInterface {
 public:
  /// There is one signal, the global error LED.
  static constexpr std::uint32_t kErrorLed = 0;

  /// What else is to be told of the module's scans, on the module's thread.
  struct ScanObserver {
    std::function<void()> begins = [] {};
    /// The tree holds what the scan found.
    std::function<void()> ends = [] {};
  };

  /// Machine, queue and observer, which may be missing, must outlive the host.
  Host(Machine& machine, NoticeQueue& notices, ScanObserver scans, TrafficObserver* traffic = nullptr)
      : machine_(machine), notices_(notices), scans_(std::move(scans)), traffic_(traffic) {}

  void SendCommand(CIExtensionModule* module, HostCommand& command, std::uint32_t zero) override;
  bool SendRequest(CIExtensionModule* module, HostCommand& command, std::uint32_t timeoutMs) override;
  void SendEvent(CIExtensionModule* module, HostCommand& command) override;
  bool SetModuleState(CIExtensionModule* module, bool state) override;
  bool ModuleStopping(CIExtensionModule* module) override;
  bool SendToModule(CIExtensionModule* module, HostCommand& command, std::uint32_t miHigh,
                    std::uint32_t miLow) override;
  std::uint32_t HostKind(CIExtensionModule* module) override;

  /// From now on every request fails at once; those that wait fail too when the machine is stopped.
  void Close() { closed_ = true; }

 private:
  Answer Dispatch(const Request& request, std::chrono::milliseconds timeout);
  Answer AskMachine(const Request& request, std::chrono::milliseconds timeout);
  Answer SetSignal(const Request& request);

  Machine& machine_;
  NoticeQueue& notices_;
  const ScanObserver scans_;
  TrafficObserver* const traffic_;
  std::atomic<bool> closed_{false};
};

}  // namespace emstatus::host
