#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "config/StatusValue.h"
#include "platform/Mutex.h"
#include "platform/ThreadSafety.h"

namespace emstatus {

class ProfileFile;

/// What a simulation file forces on one component or instance.
struct SimulationEntry {
  static constexpr std::int32_t kNotSimulated = -1;

  std::int32_t isCss = kNotSimulated;
  /// In force while no object status is simulated.
  StatusValue mappedStatus = NoStatus;
  /// Raw status, mapped as the host's would be.
  std::int32_t objectStatus = kNotSimulated;
};

/// Statuses forced for testing by the file EM_STATUS_simu.ini of the current directory.
///
/// The table keeps what it once read; the switch tells whether it is in force. [any thread]
class Simulation {
 public:
  /// Reads the file into the table. True when there was a file and the table is not empty afterwards, also
  /// when the file is another one or not active (which is traced).
  bool ReadSimu();

  /// Reads the file as monitoring begins: in force when ReadSimu says so. Returns that.
  bool BeginWithFile();

  /// Reads the file again: in force when it is there, is a simulation file, is active, and the table holds
  /// an entry.
  void FollowFile();

  /// The entry of a component or an instance, nothing while the simulation is off.
  std::optional<SimulationEntry> Find(std::string_view name) const;

 private:
  using Table = std::map<std::string, SimulationEntry, std::less<>>;

  struct Reading {
    /// There is a file.
    bool found = false;
    /// It is a simulation file and active.
    bool active = false;
    /// The table holds an entry.
    bool hasEntries = false;
  };
  Reading ReadFile();
  static bool IsActive(ProfileFile& profile);
  static void ReadEntry(ProfileFile& profile, const std::string& key, Table& table);

  mutable Mutex lock_;
  bool on_ EM_GUARDED_BY(lock_) = false;
  Table entries_ EM_GUARDED_BY(lock_);
};

}  // namespace emstatus
