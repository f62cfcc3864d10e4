#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/commands/StopSignals.h"
#include "host/configcheck/DetectionBudget.h"
#include "host/configcheck/TrialParts.h"
#include "host/configuration/Configuration.h"
#include "host/machine/ProviderMachine.h"
#include "host/module/Host.h"
#include "host/module/ModuleLibrary.h"
#include "host/module/ModuleSession.h"
#include "host/module/NoticeQueue.h"

namespace emstatus::host {

/// How long a failure took from the moment at which emhost knew of it until the module showed it.
struct MeasuredTime {
  using Duration = std::chrono::milliseconds;

  std::string component;
  /// Nothing was told any more; otherwise a part failed.
  bool isSilence = false;
  Duration allowed{0};
  /// Nothing when it was not measured, or did not show in a multiple of what is allowed.
  std::optional<Duration> taken = std::nullopt;
  /// Why it was not measured.
  std::string why;
  /// For want of time.
  bool isOutOfTime = false;

  bool IsOver() const { return why.empty() && (!taken || *taken > allowed); }
};

/// Runs the module with its configuration as it is, on a machine in which each component in turn is made to
/// fail. [main thread]
class BudgetMeasurement {
 public:
  /// `folder` is that of the configuration; changes into it. Throws a std::runtime_error that tells people
  /// what is wrong and what to do.
  BudgetMeasurement(const std::string& module, const std::string& folder, Configuration configuration,
                    std::chrono::seconds limit);
  BudgetMeasurement(const BudgetMeasurement&) = delete;
  BudgetMeasurement& operator=(const BudgetMeasurement&) = delete;
  ~BudgetMeasurement();

  /// In the order of the tree, failures before silences. What the limit leaves no time for is not measured.
  /// Throws a std::runtime_error when a stop signal comes.
  std::vector<MeasuredTime> Run();

 private:
  using Clock = std::chrono::steady_clock;

  /// A component that is tried, and where the module lists it.
  struct Tried {
    std::string component;
    std::uint32_t subsystem = 0;
    std::uint32_t position = 0;
    bool isTold = false;
    std::optional<Trial> trial;
    std::string why;
  };

  void Prepare();
  void GoThroughProbing();
  bool WaitForScan(Clock::time_point deadline);
  bool ScanNow();
  std::uint32_t StatusOf(const Tried& tried);
  bool IsGood(const Tried& tried);
  MeasuredTime Fail(const Tried& tried);
  void Restore(const Tried& tried);
  std::vector<MeasuredTime> FallSilent();
  bool HasTime() const { return Clock::now() < deadline_; }
  static void GiveUp(MeasuredTime& time);

  const Configuration configuration_;
  const Clock::time_point deadline_;
  StopSignals signals_;
  std::vector<Tried> tried_;
  std::shared_ptr<TrialParts> parts_ = std::make_shared<TrialParts>();
  std::shared_ptr<NoticeQueue> notices_ = std::make_shared<NoticeQueue>();
  std::unique_ptr<ProviderMachine> machine_;
  std::unique_ptr<Host> host_;
  std::unique_ptr<ModuleLibrary> library_;
  std::unique_ptr<ModuleSession> session_;
};

}  // namespace emstatus::host
