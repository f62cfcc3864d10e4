#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/HwmonJudge.h"
#include "host/providers/HwmonScan.h"
#include "host/providers/Provider.h"

namespace emstatus::host {

/// How often the chips of one kind are read.
struct HwmonRhythm {
  std::chrono::milliseconds interval;
  /// For limits and labels.
  std::chrono::milliseconds settled;
};

/// Boards: what is cheap to read. NVMe: every read is a command to the drive. SATA: every read may start a
/// drive's spin-down timer anew.
HwmonRhythm RhythmOf(HwmonKind kind);

/// The sensors of the chips of one kind. Each chip is read on a lane of its own.
class HwmonProvider final : public Provider {
 public:
  HwmonProvider(const FilesFactory& makeFiles, HwmonKind kind,
                std::chrono::milliseconds patience = ReadLanes::kPatience);

  std::string_view Name() const override;
  std::chrono::milliseconds Interval() const override { return RhythmOf(kind_).interval; }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Clears an intrusion alarm, or the alarms that are held of any other channel.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;

 private:
  using Clock = std::chrono::steady_clock;
  /// What one read of a chip gave, by file name; `name` tells whether it is still the same chip.
  struct Sample {
    std::string name;
    bool withSettled = false;
    std::map<std::string, FileResult<std::string>> values;
  };
  struct Chip {
    HwmonChip found;
    /// Limits and labels as they were last read, by file name.
    std::map<std::string, FileResult<std::string>> settled;
    std::optional<Clock::time_point> settledAt;
    /// The moment of the last sample that was judged.
    std::optional<Clock::time_point> judgedAt;
    std::map<HwmonChannelKey, HwmonMemory> memories;
  };

  static Sample TakeSample(SystemFiles& files, const HwmonLook& chip, bool withSettled);
  /// True when there are chips that were not there before, or elsewhere.
  bool Rescan(Clock::time_point now);
  /// Judges what came too late for the last read: the next sample takes its place, and an alarm that is clear
  /// once it was read stands in it alone.
  void JudgeSlow(Clock::time_point now);
  std::vector<Reading> TellAll(const std::map<std::string, DeviceAnswer<Sample>>& answers,
                               Clock::time_point now);
  std::map<std::string, DeviceReads<Sample>::Take> Takes(Clock::time_point now) const;
  /// Empty when the sample is that of another chip, or of none.
  std::vector<Reading> Tell(Chip& chip, const DeviceAnswer<Sample>& answer, Clock::time_point now);
  std::vector<Reading> JudgeSample(Chip& chip, const Sample& sample, Clock::time_point takenAt);
  void Describe(Reading& reading, const Chip& chip, const HwmonChannelKey& key) const;

  // Constant
  const HwmonKind kind_;
  // The provider's thread
  const std::unique_ptr<SystemFiles> files_;
  HwmonScan scan_;
  DeviceReads<Sample> reads_;
  std::map<std::string, Chip> chips_;
  std::vector<std::string> classNames_;
  std::optional<Clock::time_point> askedAt_;
  std::optional<Clock::time_point> scannedAt_;
  std::optional<Clock::time_point> searchedAt_;
  /// A chip is no longer where it was.
  bool hasMoved_ = false;
};

}  // namespace emstatus::host
