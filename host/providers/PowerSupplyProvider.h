#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/PowerSupplyJudge.h"
#include "host/providers/Provider.h"

namespace emstatus::host {

/// Power supplies and batteries of the machine.
class PowerSupplyProvider final : public Provider {
 public:
  explicit PowerSupplyProvider(const FilesFactory& makeFiles,
                               std::chrono::milliseconds patience = ReadLanes::kPatience);

  std::string_view Name() const override { return "power supplies"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;

 private:
  struct Sample {
    PowerSupplyValues values;
    /// The sensors of the supply are told as those of a chip.
    bool hasChip = false;
  };

  static Sample TakeSample(SystemFiles& files, const std::string& folder);

  const std::unique_ptr<SystemFiles> files_;
  DeviceReads<Sample> reads_;
};

}  // namespace emstatus::host
