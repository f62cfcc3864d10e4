#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace emstatus::host {

/// The text of an EM_STATUS.ini with the pauses before and between scans set to 0; everything else stays as
/// it is. Lines keep their numbers unless a pause had no entry of its own, which then gets one. [any thread]
std::string WithoutPauses(std::string_view configurationText);

/// A configuration in a temporary folder of its own, without pauses, so that a module that is started there
/// makes one scan after the other. The folder is private to the user and goes with this object. A module
/// that scans all the time keeps a processor busy: whoever starts one holds it up where a scan ends.
/// [main thread]
class UnpausedConfiguration {
 public:
  /// The texts of EM_STATUS.ini and, when there is one, EM_STATUS_simu.ini. Throws a std::system_error when
  /// the folder cannot be made.
  UnpausedConfiguration(std::string_view configuration, const std::optional<std::string>& simulation);
  UnpausedConfiguration(const UnpausedConfiguration&) = delete;
  UnpausedConfiguration& operator=(const UnpausedConfiguration&) = delete;
  ~UnpausedConfiguration();

  /// A copy of what `folder` holds at this moment. Throws a std::system_error when that cannot be read.
  static UnpausedConfiguration Of(const std::filesystem::path& folder);

  /// An absolute path.
  const std::filesystem::path& Folder() const { return folder_; }

 private:
  std::filesystem::path folder_;
};

/// The text of a configuration file. Throws a std::system_error when it cannot be read, is no ordinary file,
/// or is larger than 64 MiB. [any thread]
std::string ReadConfigurationFile(const std::filesystem::path& path);

}  // namespace emstatus::host
