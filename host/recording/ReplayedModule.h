#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/configuration/Configuration.h"
#include "host/configuration/UnpausedConfiguration.h"
#include "host/machine/ScanGate.h"
#include "host/module/ComponentPlaces.h"
#include "host/module/Host.h"
#include "host/module/ModuleLibrary.h"
#include "host/module/ModuleSession.h"
#include "host/module/NoticeQueue.h"
#include "host/recording/RecordedMachine.h"
#include "host/recording/RecordedScan.h"
#include "host/view/Report.h"

namespace emstatus::host {

/// An event of a module, and whom it is about by the names in the configuration: "Cooling/Fans/Fan0".
struct ReplayedEvent {
  Request event;
  std::string subject;
  std::uint32_t status = 0;
};

/// What a module made of a recorded scan.
struct ReplayedScan {
  /// As the module wrote it; null when it wrote none.
  nlohmann::ordered_json tree;
  std::uint32_t systemStatus = 0;
  std::uint32_t led = 0;
  std::vector<ReplayedEvent> events;
  /// What the module asked, and the recording does not say.
  std::vector<Request> unanswered;
};

/// A module that makes recorded scans again, with a private copy of a configuration and as fast as it can.
/// Changes into that copy's folder and sets the recorded environment; the folder from before is the current
/// one again afterwards. [main thread]
class ReplayedModule {
 public:
  /// `library` is an absolute path. Throws a std::runtime_error that tells people what is wrong.
  ReplayedModule(const std::string& library, const std::string& configuration, const RecordingHeader& header);
  ReplayedModule(const ReplayedModule&) = delete;
  ReplayedModule& operator=(const ReplayedModule&) = delete;
  ~ReplayedModule();

  /// Makes the next scan of the recording; `following` is the one behind it, if any. Throws a
  /// std::runtime_error when the module does not finish it.
  ReplayedScan Scan(const RecordedScan& scan, const RecordedScan* following);

  /// How an event names what it is about.
  std::string SubjectOf(const Request& event);

  /// The state after the last scan, of which this is the result.
  Report MakeReport(const ReplayedScan& scan, std::chrono::system_clock::time_point time);

  const RecordedMachine& Machine() const { return machine_; }

 private:
  void Simulate(const RecordedScan* scan) const;
  void WaitFor(const std::function<bool(std::chrono::milliseconds)>& happens);
  ReplayedEvent MakeEvent(const Request& event);

  // In the order of their making
  const std::filesystem::path folderBefore_;
  const Configuration rules_;
  const UnpausedConfiguration configuration_;
  RecordedMachine machine_;
  NoticeQueue notices_;
  ScanGate gate_;
  std::unique_ptr<Host> host_;
  std::unique_ptr<ModuleLibrary> library_;
  std::unique_ptr<ModuleSession> session_;
  std::unique_ptr<ComponentPlaces> places_;
  bool runs_ = false;
};

}  // namespace emstatus::host
