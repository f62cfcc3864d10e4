#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "host/providers/Reading.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// What a drive says of its own health (SMART).
struct SmartHealth {
  /// SATA: the drive predicts its failure.
  bool predictsFailure = false;
  /// NVMe: the bits of its critical warning.
  std::uint8_t criticalWarning = 0;
  /// NVMe: spare blocks left and the share from which that is too few, and the share of its life that is
  /// used; percent.
  std::optional<std::uint8_t> spare;
  std::optional<std::uint8_t> spareNeeded;
  std::optional<std::uint8_t> lifeUsed;

  friend bool operator==(const SmartHealth&, const SmartHealth&) = default;
};

/// Reads the SMART log page of an NVMe controller; absent when it is too short or all zeros. [any thread]
std::optional<SmartHealth> ParseNvmeSmartLog(std::span<const std::uint8_t> page);

/// The registers that an ATA command left in the sense data of a drive.
struct AtaRegisters {
  std::uint8_t count = 0;
  std::uint8_t middle = 0;
  std::uint8_t high = 0;
};

/// The registers in sense data of either format; absent when there are none. [any thread]
std::optional<AtaRegisters> ParseAtaRegisters(std::span<const std::uint8_t> sense);

/// Reads the registers that SMART RETURN STATUS left in the sense data of a SATA drive; absent when they are
/// neither of the two answers. [any thread]
std::optional<SmartHealth> ParseAtaSmartStatus(std::span<const std::uint8_t> sense);

/// Adds to the reading of a disk what it says of itself. [any thread]
void JudgeSmart(Reading& reading, const SmartHealth& health);

/// Asks drives for their health. [any thread]
class SmartReader {
 public:
  SmartReader() = default;
  SmartReader(const SmartReader&) = delete;
  SmartReader& operator=(const SmartReader&) = delete;
  virtual ~SmartReader() = default;

  /// Of a disk by its name ("sda", "nvme0n1"). ENODATA from one that sleeps, which is not woken; EOPNOTSUPP
  /// from one that has no such thing.
  virtual FileResult<SmartHealth> Ask(const std::string& disk) = 0;
};

/// Asks the drives of this machine, through the kernel's passages for NVMe and ATA commands.
std::unique_ptr<SmartReader> MakeSmartReader();

}  // namespace emstatus::host
