#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "host/module/TrafficObserver.h"
#include "host/recording/ObjectJournal.h"
#include "host/recording/RecordedScan.h"
#include "host/recording/RequestKey.h"
#include "host/simulation/SimulationFolder.h"

namespace emstatus::host {

/// Gathers what passes between host and module into scans, and leaves out what is as it was.
class TrafficLog final : public TrafficObserver {
 public:
  void OnStart(ModuleSession& session, const Machine& machine) override;
  void OnAnswer(const Request& request, const Answer& answer, std::chrono::milliseconds took) override;
  void OnEvent(const Request& event) override;
  void OnWakeUp() override;
  void OnScanBegin() override;
  void OnScanEnd(std::uint32_t led) override;

  /// What was there when the module was started; its version is left empty. [main thread, after OnStart]
  const RecordingHeader& Header() const { return header_; }

  /// The oldest scan that has ended and was not taken yet. [main thread]
  std::optional<RecordedScan> Take();

 private:
  using Clock = std::chrono::steady_clock;
  /// The last answers to a request, and how often it was made in scan `scan`.
  struct Known {
    std::vector<Answer> answers;
    std::uint32_t asked = 0;
    std::uint64_t scan = 0;
  };

  std::int64_t Now() const;
  void NoteSimulation();
  RecordedScan Outcome();

  // Constant from OnStart on
  ModuleSession* session_ = nullptr;
  const Machine* machine_ = nullptr;
  Clock::time_point began_;
  RecordingHeader header_;
  std::optional<SimulationFolder> folder_;

  // Of the module's thread
  std::optional<SimulationFolder::Stamp> stamp_;
  std::optional<std::string> simulation_;
  std::string treeText_;
  StatusNode tree_;
  ObjectJournal objects_;

  std::mutex lock_;
  // Guarded by lock_
  std::map<RequestKey, Known> known_;
  RecordedScan scan_;
  std::uint64_t ended_ = 0;
  std::deque<RecordedScan> finished_;
};

}  // namespace emstatus::host
