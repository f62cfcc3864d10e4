#include "host/providers/SmartHealth.h"

#include <algorithm>

#include "host/providers/Blame.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kNvmeLogBytes = 512;
constexpr std::size_t kSenseBytes = 22;
constexpr std::size_t kFixedSenseBytes = 18;

struct WarningRow {
  std::uint8_t bit;
  Condition condition;
  const char* reason;
};

constexpr WarningRow kNvmeWarnings[] = {
    {0x04, Condition::Critical,
     "the drive says that it is no longer reliable after media or internal errors"},
    {0x08, Condition::Critical, "the drive has made its media read-only"},
    {0x01, Condition::Critical, "the drive has too few spare blocks left"},
    {0x20, Condition::Critical, "the drive's persistent memory region has become read-only or unreliable"},
    {0x10, Condition::Warning, "the backup of the drive's volatile memory has failed"},
    {0x02, Condition::Warning, "the drive says that its temperature is beyond its limits"},
};

}  // namespace

std::optional<SmartHealth> ParseNvmeSmartLog(std::span<const std::uint8_t> page) {
  if (page.size() < kNvmeLogBytes || std::ranges::all_of(page, [](std::uint8_t byte) { return byte == 0; })) {
    return std::nullopt;
  }
  SmartHealth health;
  health.criticalWarning = page[0];
  health.spare = page[3];
  health.spareNeeded = page[4];
  health.lifeUsed = page[5];
  return health;
}

std::optional<AtaRegisters> ParseAtaRegisters(std::span<const std::uint8_t> sense) {
  if (sense.size() < kFixedSenseBytes) {
    return std::nullopt;
  }
  const int format = sense[0] & 0x7F;
  // Descriptor format, with the descriptor that returns ATA registers first.
  if (format == 0x72 && sense.size() >= kSenseBytes && sense[8] == 0x09) {
    return AtaRegisters{sense[13], sense[17], sense[19]};
  }
  // Fixed format, "ATA pass-through information available".
  if (format == 0x70 && sense[12] == 0x00 && sense[13] == 0x1D) {
    return AtaRegisters{sense[6], sense[10], sense[11]};
  }
  return std::nullopt;
}

std::optional<SmartHealth> ParseAtaSmartStatus(std::span<const std::uint8_t> sense) {
  const auto registers = ParseAtaRegisters(sense);
  SmartHealth health;
  if (registers && registers->middle == 0xF4 && registers->high == 0x2C) {
    health.predictsFailure = true;
  } else if (!registers || registers->middle != 0x4F || registers->high != 0xC2) {
    return std::nullopt;
  }
  return health;
}

void JudgeSmart(Reading& reading, const SmartHealth& health) {
  constexpr char kReplace[] = "save its data and replace it";
  if (health.predictsFailure) {
    Blame(reading, Condition::Critical, "the drive predicts its own failure (SMART)", kReplace);
  }
  for (const WarningRow& row : kNvmeWarnings) {
    if ((health.criticalWarning & row.bit) != 0) {
      Blame(reading, row.condition, std::string(row.reason) + " (SMART)",
            row.bit == 0x02 ? "look at the fans and the air flow" : kReplace);
    }
  }
  if (health.spare && health.spareNeeded && *health.spare < *health.spareNeeded) {
    Blame(reading, Condition::Critical,
          Format("%u %% of its spare blocks left, at least %u %% expected", unsigned{*health.spare},
                 unsigned{*health.spareNeeded}),
          kReplace);
  }
  if (health.lifeUsed && *health.lifeUsed >= 100) {
    Blame(reading, Condition::Warning,
          Format("%u %% of its expected life used, less than 100 %% expected", unsigned{*health.lifeUsed}),
          "plan to replace it");
  }
}

}  // namespace emstatus::host
