#include "host/providers/MemoryProvider.h"

#include <algorithm>
#include <map>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

Reading InUse(ObjectClass objectClass, const char* id, const char* name, std::uint64_t total,
              std::uint64_t free) {
  Reading reading;
  reading.objectClass = objectClass;
  reading.id = id;
  reading.name = name;
  reading.quality = Quality::Good;
  reading.customerServiceable = true;
  const double used = static_cast<double>(total - std::min(total, free));
  reading.measurement = Measurement{100 * used / static_cast<double>(total), Unit::Percent, {}};
  return reading;
}

std::string UseText(const Reading& reading, double limit, std::uint64_t left) {
  return Format("%.1f %% used, less than %.0f %% expected; ", reading.measurement->value, limit) +
         ValueText(static_cast<double>(left), Unit::Byte) + " left";
}

Reading JudgeUse(const MemoryFigures& figures, const UseLimits& limits) {
  Reading reading = InUse(ObjectClass::MemoryUse, "memory", "Memory", figures.total, figures.available);
  reading.measurement->limits.upperWarning = limits.warning;
  reading.measurement->limits.upperCritical = limits.critical;
  const double percent = reading.measurement->value;
  if (percent >= limits.warning) {
    reading.condition = percent >= limits.critical ? Condition::Critical : Condition::Warning;
    reading.reason = UseText(reading, limits.warning, figures.available);
    reading.advice = "find what uses it, end or limit it, or add memory";
  }
  if (figures.corrupted > 0) {
    reading.condition = std::max(reading.condition, Condition::Warning);
    reading.reason += (reading.reason.empty() ? "" : "; ") +
                      ValueText(static_cast<double>(figures.corrupted), Unit::Byte) +
                      " taken out of use after hardware errors, 0 B expected";
    reading.advice = "look for the failing memory module among the hardware errors of the kernel log";
  }
  return reading;
}

}  // namespace

std::optional<MemoryFigures> ParseMemory(std::string_view text) {
  std::map<std::string_view, std::uint64_t> bytes;
  for (const std::string_view line : Lines(text)) {
    const std::vector<std::string_view> words = Words(line, ':');
    const auto number = words.size() >= 2 ? ParseUnsigned(words[1]) : std::nullopt;
    if (number) {
      bytes[words[0]] = *number * (words.size() > 2 && words[2] == "kB" ? 1024 : 1);
    }
  }
  MemoryFigures figures;
  figures.total = bytes["MemTotal"];
  figures.available = bytes.contains("MemAvailable") ? bytes["MemAvailable"]
                                                     : bytes["MemFree"] + bytes["Buffers"] + bytes["Cached"];
  figures.swapTotal = bytes["SwapTotal"];
  figures.swapFree = bytes["SwapFree"];
  figures.corrupted = bytes["HardwareCorrupted"];
  return figures.total > 0 ? std::optional(figures) : std::nullopt;
}

std::vector<Reading> JudgeMemory(const MemoryFigures& figures, const UseLimits& limits, double swapWarning) {
  std::vector<Reading> readings = {JudgeUse(figures, limits)};
  if (figures.swapTotal > 0) {
    Reading swap = InUse(ObjectClass::SwapUse, "swap", "Swap", figures.swapTotal, figures.swapFree);
    swap.mayGo = true;
    swap.measurement->limits.upperWarning = swapWarning;
    if (swap.measurement->value >= swapWarning) {
      swap.condition = Condition::Warning;
      swap.reason = UseText(swap, swapWarning, figures.swapFree);
      swap.advice = "find what uses so much memory, end or limit it, or add memory";
    }
    readings.push_back(std::move(swap));
  }
  return readings;
}

MemoryProvider::MemoryProvider(std::unique_ptr<SystemFiles> files, UseLimits limits, double swapWarning)
    : files_(std::move(files)), limits_(limits), swapWarning_(swapWarning) {}

std::vector<Reading> MemoryProvider::Read(const ReadContext&) {
  const FileResult<std::string> text = files_->ReadText("/proc/meminfo", 1U << 16);
  if (!text) {
    throw std::system_error(text.error, std::generic_category(), "/proc/meminfo");
  }
  const std::optional<MemoryFigures> figures = ParseMemory(text.value);
  if (!figures) {
    throw std::runtime_error("/proc/meminfo tells no total");
  }
  return JudgeMemory(*figures, limits_, swapWarning_);
}

}  // namespace emstatus::host
