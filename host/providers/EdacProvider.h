#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/EdacController.h"
#include "host/providers/ErrorHistory.h"
#include "host/providers/Provider.h"
#include "host/providers/StateFile.h"

namespace emstatus::host {

/// Corrected errors a day of one memory module from which its failure is predicted.
inline constexpr std::uint64_t kCorrectedPerDay = 50;

/// The reading of a memory module, without id and name, from its history. [any thread]
Reading JudgeMemoryModule(const ErrorHistory& history, std::int64_t now);

/// Memory modules by the error counters of their controllers (EDAC), each of which is read on a lane of its
/// own. What was counted, and which modules there were, is kept over restarts.
class EdacProvider final : public Provider {
 public:
  /// `stateFolder` empty: nothing is kept.
  EdacProvider(const FilesFactory& makeFiles, const std::string& stateFolder,
               std::chrono::milliseconds patience = ReadLanes::kPatience);

  std::string_view Name() const override { return "memory modules"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Forgets the errors of a module so far, and a module that is gone.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;

 private:
  using Clock = std::chrono::steady_clock;
  struct Known {
    ErrorHistory history;
    std::string name;
  };

  std::vector<std::string> FindControllers();
  void FollowClock(const ReadContext& context);
  void TellController(std::vector<Reading>& readings, const std::string& controller,
                      const DeviceAnswer<EdacController>& answer, const ReadContext& context);
  void TellLate(std::vector<Reading>& readings, const std::string& controller, Clock::duration silence) const;
  Reading JudgeModule(const EdacModule& module, ErrorHistory::Counters counters, std::int64_t now);
  void TellGone(std::vector<Reading>& readings, const std::vector<std::string>& controllers);
  void Load();
  void Save();
  void NoteProblem(std::vector<Reading>& readings) const;

  const std::unique_ptr<SystemFiles> files_;
  DeviceReads<EdacController> reads_;
  StateFile state_;
  bool isLoaded_ = false;
  /// What was wrong with the file that was loaded; empty when nothing was.
  std::string loadProblem_;
  /// Names the start of the machine.
  std::string boot_;
  /// What the clock on the wall showed at the start of the machine's own clock, when it was last looked at.
  std::optional<std::chrono::system_clock::duration> clockOffset_;
  std::map<std::string, Known> known_;
  /// Those that are there, of the last Read.
  std::set<std::string> there_;
};

}  // namespace emstatus::host
