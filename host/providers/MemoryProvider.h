#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "host/providers/FilesystemJudge.h"
#include "host/providers/Provider.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// What /proc/meminfo tells, in bytes.
struct MemoryFigures {
  std::uint64_t total = 0;
  std::uint64_t available = 0;
  std::uint64_t swapTotal = 0;
  std::uint64_t swapFree = 0;
  /// Taken out of use because the hardware failed there.
  std::uint64_t corrupted = 0;
};

/// Reads a meminfo text; absent without a total above 0. Kernels that do not tell what is available get an
/// estimate. [any thread]
std::optional<MemoryFigures> ParseMemory(std::string_view text);

/// The memory in use and, when there is swap, the swap in use (told, never critical). [any thread]
std::vector<Reading> JudgeMemory(const MemoryFigures& figures, const UseLimits& limits, double swapWarning);

/// Memory and swap in use.
class MemoryProvider final : public Provider {
 public:
  explicit MemoryProvider(std::unique_ptr<SystemFiles> files, UseLimits limits = {90, 97},
                          double swapWarning = 80);

  std::string_view Name() const override { return "memory"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(2); }
  std::vector<Reading> Read(const ReadContext& context) override;

 private:
  const std::unique_ptr<SystemFiles> files_;
  const UseLimits limits_;
  const double swapWarning_;
};

}  // namespace emstatus::host
