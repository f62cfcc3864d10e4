#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/Provider.h"

namespace emstatus::host {

/// What a thermal zone answered.
struct ThermalZoneSample {
  std::string type;
  FileResult<std::string> temperature;
  /// "enabled", or "disabled" when nobody measures; empty where it is not told.
  std::string mode;
  /// Trip points by type ("critical", "hot", "passive", "active"): the lowest of each, in m°C as read.
  std::map<std::string, std::int64_t> trips;
};

/// The reading of a zone, without id and name; absent when its temperature is gone. Hot is a warning,
/// critical is critical; where cooling begins (active, passive) is normal work. [any thread]
std::optional<Reading> JudgeThermalZone(const ThermalZoneSample& zone);

/// The thermal zones, but for those that show a sensor again that its own driver tells as well.
class ThermalZoneProvider final : public Provider {
 public:
  explicit ThermalZoneProvider(const FilesFactory& makeFiles,
                               std::chrono::milliseconds patience = ReadLanes::kPatience);

  std::string_view Name() const override { return "thermal zones"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;

 private:
  /// What a zone is called among the zones; empty for one that shows again what is told elsewhere.
  std::string IdentityOf(const std::string& type, std::map<std::string, int>& used,
                         bool hasCoreSensors) const;
  bool HasChip(const std::string& name, const ReadContext& context);

  const std::unique_ptr<SystemFiles> files_;
  DeviceReads<ThermalZoneSample> reads_;
  DeviceReads<std::string> chipNames_;
  /// Present ones, whose temperatures are told as theirs.
  std::vector<std::string> powerSupplies_;
};

}  // namespace emstatus::host
