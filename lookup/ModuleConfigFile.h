#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/CRegistry.h"

namespace emstatus {

/// Finds the configuration file of an extension module, and reads and writes the module's properties, by what
/// the host left in the registry when it was installed. [any thread]
///
/// The host's own key is the one named by the value "Host Warden" below the local machine's
/// "SYSTEM\CurrentControlSet\Control\UUID\5E0D2A47-93C1-4B8E-A6F2-1D7C3B9E8F40", or else
/// "SOFTWARE\Orvanex\Management\Host Warden". A module's properties are the values of the host key's child
/// key with the module's name.
class ModuleConfigFile {
 public:
  /// `registry` is kept by reference.
  explicit ModuleConfigFile(CRegistry& registry) : registry_(registry) {}

  /// Looks for "<module>.<extension>" in the current directory, in the host's data root (the value "DataRoot"
  /// of the host key's child "DATA") and in its binary directory: what the value "BinRoot" of the child
  /// "Setup" has before its last "/". An empty value counts as missing, and so does a "BinRoot" without "/".
  /// True with the path of the first one that exists; otherwise false with `path` as it was. The steps are
  /// told to the trace (level 3, failures 1).
  bool GetModuleConfigFile(const char* module, std::string& path, const char* extension);

  /// A property that is a text or a number. False, with `value` as it was, when it is missing or of another
  /// type. What was read is told to the trace (level 3).
  bool GetModuleProperty(const char* module, const char* property, std::string& value);
  bool GetModuleProperty(const char* module, const char* property, std::int32_t& value);

  /// Sets a property, making the module's key when there is none, and saves the registry. False when either
  /// fails. Told to the trace (level 3).
  bool SetModuleProperty(const char* module, const char* property, std::int32_t value);

 private:
  std::string HostKeyPath();
  std::string ModuleKeyPath(const char* module);
  bool IsInDataRoot(const std::string& hostKey, const std::string& fileName, std::string& path);
  bool IsInBinaryDirectory(const std::string& hostKey, const std::string& fileName, std::string& path);
  std::optional<std::string> BinaryDirectory(const std::string& hostKey);
  std::optional<std::string> PathText(const std::string& keyPath, const char* name);
  std::optional<std::string> Text(const std::string& keyPath, const char* name);

  CRegistry& registry_;
};

}  // namespace emstatus
