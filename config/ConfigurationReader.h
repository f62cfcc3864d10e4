#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "config/StatusConfiguration.h"

namespace emstatus {

class ComponentReader;
class ProfileFile;

/// Reads EM_STATUS.ini as a whole.
class ConfigurationReader {
 public:
  /// Looks for the configuration file; true when `path` holds where it is.
  using FileLookup = std::function<bool(std::string& path)>;
  /// Whether the module is shutting down.
  using ShutdownTest = std::function<bool()>;

  ConfigurationReader(FileLookup findFile, ShutdownTest isShutdown)
      : findFile_(std::move(findFile)), isShutdown_(std::move(isShutdown)) {}

  /// Reads the file into `configuration`, which must be fresh. False when the file cannot be opened or is
  /// not a configuration file of this layout; everything else that is wrong or missing is traced and leaves
  /// its default. Without a file every setting has its default, and the result is true. [host thread]
  bool ReadConfigurationFile(StatusConfiguration& configuration);

 private:
  bool OpenAndIdentify(const std::string& path, ProfileFile& profile, int& layoutVersion);
  void ReadSettings(ProfileFile& profile, int layoutVersion, StatusConfiguration& configuration);
  void ReadStatusNames(ProfileFile& profile, StatusConfiguration& configuration);
  void ReadVariables(ProfileFile& profile);
  void ReadVariableSection(ProfileFile& profile, const std::string& section);
  void ReadSystem(ProfileFile& profile, StatusConfiguration& configuration);
  void ReadSubsystem(ProfileFile& profile, ComponentReader& reader, const std::string& name,
                     StatusConfiguration& configuration);
  static void ReadComponent(ComponentReader& reader, const std::string& name,
                            StatusConfiguration& configuration, SubsystemDefinition& subsystem);

  FileLookup findFile_;
  ShutdownTest isShutdown_;
  ConfigVariables variables_;
  std::uint32_t componentsListed_ = 0;
};

}  // namespace emstatus
