#pragma once

#include <atomic>
#include <functional>
#include <string_view>

#include "config/CurrentConfiguration.h"
#include "config/Simulation.h"
#include "platform/EventHandle.h"
#include "status/CabinetList.h"
#include "status/HostLink.h"
#include "status/SystemScan.h"
#include "tree/RequestHandler.h"
#include "tree/StatusTree.h"

namespace emstatus::fuzz {

/// The module's scan and request handling put together without a polling thread.
class ScannedSystem final : private HostLink {
 public:
  explicit ScannedSystem(std::function<void(HostCommand&)> answer);

  CurrentConfiguration configuration;
  Simulation simulation;
  CabinetList cabinets;
  StatusTree tree;
  std::atomic<bool> switchShutdown{false};
  /// After as many requests the host shuts down, which bounds what an input can cost.
  std::uint32_t requestsLeft = 500;

  /// Scans, and checks what is published.
  void Scan(std::uint64_t cycle);

  /// Asks for the whole tree and for some of everything else.
  void AskEverything();

 private:
  void SendRequest(HostCommand& command) override;
  void SendEvent(HostCommand& command) override;
  std::uint32_t ServerCabinet() const override { return 0; }

  void CheckTree() const;
  void Ask(std::uint32_t operation, std::uint32_t extension, std::uint32_t object, std::string_view node);

  std::function<void(HostCommand&)> answer_;
  std::atomic<bool> raidRefresh_{true};
  EventHandle wakeUp_;
  SystemScan scan_;
  RequestHandler requests_;
};

/// Reads a configuration file; nothing but a complete configuration file is given.
StatusConfiguration ConfigurationOf(std::string_view text);

}  // namespace emstatus::fuzz
