#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "host/providers/Provider.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// The share of the last minute, in percent, in which some work (or all of it) had to wait.
struct Pressure {
  std::optional<double> some;
  std::optional<double> full;
};

/// Reads a text of /proc/pressure. What is not there is absent. [any thread]
Pressure ParsePressure(std::string_view text);

/// Share of the last minute, in percent, for which all work waited, from which it is a warning.
struct PressureLimits {
  double memory = 10;
  double io = 25;
};

/// How long work had to wait for processors, memory and I/O (PSI). A warning at most: waiting is no fault.
class PressureProvider final : public Provider {
 public:
  explicit PressureProvider(std::unique_ptr<SystemFiles> files, PressureLimits limits = {});

  std::string_view Name() const override { return "pressure"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(5); }
  std::vector<Reading> Read(const ReadContext& context) override;

 private:
  const std::unique_ptr<SystemFiles> files_;
  const PressureLimits limits_;
};

}  // namespace emstatus::host
