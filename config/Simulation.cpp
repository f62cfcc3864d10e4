#include "config/Simulation.h"

#include <vector>

#include "config/SplitText.h"
#include "platform/CDebugClient.h"
#include "platform/ProfileFile.h"

namespace emstatus {
namespace {

constexpr const char* kSimulationFile = "EM_STATUS_simu.ini";

}  // namespace

bool Simulation::ReadSimu() {
  const Reading reading = ReadFile();
  return reading.found && reading.hasEntries;
}

bool Simulation::BeginWithFile() {
  const bool on = ReadSimu();
  const MutexGuard guard(lock_);
  on_ = on;
  return on;
}

void Simulation::FollowFile() {
  const Reading reading = ReadFile();
  const MutexGuard guard(lock_);
  on_ = reading.active && reading.hasEntries;
}

std::optional<SimulationEntry> Simulation::Find(std::string_view name) const {
  const MutexGuard guard(lock_);
  if (!on_) return std::nullopt;
  const auto entry = entries_.find(name);
  if (entry == entries_.end()) return std::nullopt;
  return entry->second;
}

Simulation::Reading Simulation::ReadFile() {
  ProfileFile profile;
  if (!profile.Open(kSimulationFile, 1)) return {};
  Table table;
  {
    const MutexGuard guard(lock_);
    table = entries_;
  }
  Reading reading{.found = true, .active = IsActive(profile)};
  if (reading.active) {
    EM_TRACE(1, "\n\nEM_STATUS (ReadSimu): Read error simulation entries from INI file");
    std::vector<std::string> keys;
    profile.GetKeyNames(keys, "Components");
    for (const std::string& key : keys) ReadEntry(profile, key, table);
  }
  profile.Close();
  reading.hasEntries = !table.empty();
  const MutexGuard guard(lock_);
  entries_ = std::move(table);
  return reading;
}

bool Simulation::IsActive(ProfileFile& profile) {
  std::string fileName;
  profile.GetString(fileName, "Info", "Filename", "");
  if (fileName != kSimulationFile) {
    EM_TRACE(
        1,
        "\n\nEM_STATUS (ReadSimu): ## ERROR! Error simulation file is probably not a correct simulation file - file not used!\n");
    return false;
  }
  if (profile.GetInt("Config", "Active", 0) == 0) {
    EM_TRACE(
        1,
        "\n\nEM_STATUS (ReadSimu): ## NOTE! Error simulation file available but not active - may be changed during run-time!");
    return false;
  }
  return true;
}

void Simulation::ReadEntry(ProfileFile& profile, const std::string& key, Table& table) {
  const std::int32_t value = profile.GetInt("Components", key.c_str(), 0);
  EM_TRACE(2, "\nEM_STATUS (ReadSimu):   error entry \"%s\" = %d", key.c_str(),
           static_cast<std::uint8_t>(value));
  const std::vector<std::string> parts = SplitText(key, '.');
  if (parts.size() != 2) {
    EM_TRACE(
        1,
        "\n\nEM_STATUS (ReadSimu): ## ERROR! Wrong syntax on error simulation file entry \"%s\" - entry not used!\n",
        key.c_str());
    return;
  }
  const std::string& name = parts[0];
  const std::string& type = parts[1];
  EM_TRACE(4, "\nEM_STATUS (ReadSimu):     component name = \"%s\", entry type = \"%s\"", name.c_str(),
           type.c_str());
  SimulationEntry& entry = table[name];
  if (type == "MappedStatus") {
    entry.mappedStatus = static_cast<StatusValue>(value);
  } else if (type == "ObjectStatus") {
    entry.objectStatus = value;
  } else if (type == "IsCss") {
    entry.isCss = value;
  } else {
    EM_TRACE(
        1,
        "\n\nEM_STATUS (ReadSimu): ## ERROR! Wrong error simulation file keyword \"%s\" - entry not used!\n",
        type.c_str());
  }
}

}  // namespace emstatus
