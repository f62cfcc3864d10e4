#include "lookup/ModuleConfigFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "platform/CDebugClient.h"

namespace emstatus {

namespace {

constexpr char kUuidKey[] = "SYSTEM\\CurrentControlSet\\Control\\UUID\\5E0D2A47-93C1-4B8E-A6F2-1D7C3B9E8F40";
constexpr char kDefaultHostKey[] = "SOFTWARE\\Orvanex\\Management\\Host Warden";

bool IsIn(const std::string& directory, const std::string& fileName, std::string& path) {
  const std::string candidate = directory + "/" + fileName;
  struct stat status;
  if (::stat(candidate.c_str(), &status) != 0) return false;
  path = candidate;
  return true;
}

bool IsInCurrentDirectory(const std::string& fileName, std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> directory(::getcwd(nullptr, 0), &std::free);
  if (directory == nullptr) {
    EM_TRACE_ALWAYS(1, "\nModuleConfigFile    : ## ERROR 0x%X! GetCurrentDir() FAILED!",
                    static_cast<unsigned>(errno));
    return false;
  }
  EM_TRACE_ALWAYS(3, "\nCExtensionModule    : Check for config file in current directory %s...",
                  directory.get());
  return IsIn(directory.get(), fileName, path);
}

}  // namespace

bool ModuleConfigFile::GetModuleConfigFile(const char* module, std::string& path, const char* extension) {
  const std::string fileName = std::string(module).append(".").append(extension);
  EM_TRACE_ALWAYS(3, "\nModuleConfigFile    : GetModuleConfigFile: \"%s\"", fileName.c_str());
  EM_TRACE_ALWAYS(3, "\nModuleConfigFile    : Extension module config file requested: \"%s\"",
                  fileName.c_str());
  const std::string hostKey = HostKeyPath();
  if (!IsInCurrentDirectory(fileName, path) && !IsInDataRoot(hostKey, fileName, path) &&
      !IsInBinaryDirectory(hostKey, fileName, path)) {
    EM_TRACE_ALWAYS(1, "\nModuleConfigFile    : ## ERROR! Module specific config file %s not found!",
                    fileName.c_str());
    return false;
  }
  EM_TRACE_ALWAYS(3, "\nModuleConfigFile    : Config file path: \"%s\"", path.c_str());
  return true;
}

bool ModuleConfigFile::IsInDataRoot(const std::string& hostKey, const std::string& fileName,
                                    std::string& path) {
  const std::optional<std::string> directory = PathText(hostKey + "\\DATA", "DataRoot");
  if (!directory) {
    EM_TRACE_ALWAYS(3, "\nModuleConfigFile    : Could not find data root directory");
    return false;
  }
  EM_TRACE_ALWAYS(3, "\nModuleConfigFile    : Check for config file in Hostwarden/qmcd data root %s...",
                  directory->c_str());
  return IsIn(*directory, fileName, path);
}

bool ModuleConfigFile::IsInBinaryDirectory(const std::string& hostKey, const std::string& fileName,
                                           std::string& path) {
  const std::optional<std::string> directory = BinaryDirectory(hostKey);
  if (!directory) {
    EM_TRACE_ALWAYS(3, "\nModuleConfigFile    : Could not find the Hostwarden binary path");
    return false;
  }
  EM_TRACE_ALWAYS(3, "\nModuleConfigFile    : Check for config file in Hostwarden/qmcd binary path %s...",
                  directory->c_str());
  return IsIn(*directory, fileName, path);
}

std::optional<std::string> ModuleConfigFile::BinaryDirectory(const std::string& hostKey) {
  std::optional<std::string> root = PathText(hostKey + "\\Setup", "BinRoot");
  if (!root) return std::nullopt;
  const std::size_t slash = root->rfind('/');
  if (slash == std::string::npos) return std::nullopt;
  root->resize(slash);
  return root;
}

std::optional<std::string> ModuleConfigFile::PathText(const std::string& keyPath, const char* name) {
  std::optional<std::string> text = Text(keyPath, name);
  if (text && text->empty()) text.reset();
  return text;
}

std::string ModuleConfigFile::HostKeyPath() {
  return Text(kUuidKey, "Host Warden").value_or(kDefaultHostKey);
}

std::string ModuleConfigFile::ModuleKeyPath(const char* module) {
  return HostKeyPath().append("\\").append(module);
}

std::optional<std::string> ModuleConfigFile::Text(const std::string& keyPath, const char* name) {
  const RegistryHandle key = registry_.Open(HKEY_LOCAL_MACHINE, keyPath.c_str());
  if (key == kNoRegistryKey) return std::nullopt;
  const std::optional<RegistryValue> value = registry_.GetValue(key, name);
  if (!value || value->Text() == nullptr) return std::nullopt;
  return *value->Text();
}

bool ModuleConfigFile::GetModuleProperty(const char* module, const char* property, std::string& value) {
  std::optional<std::string> text = Text(ModuleKeyPath(module), property);
  if (!text) return false;
  value = *std::move(text);
  EM_TRACE_ALWAYS(3, "\n%-20s: Read module property \"%s\" = \"%s\"", module, property, value.c_str());
  return true;
}

bool ModuleConfigFile::GetModuleProperty(const char* module, const char* property, std::int32_t& value) {
  const RegistryHandle key = registry_.Open(HKEY_LOCAL_MACHINE, ModuleKeyPath(module).c_str());
  if (key == kNoRegistryKey) return false;
  const std::optional<RegistryValue> found = registry_.GetValue(key, property);
  if (!found || found->Number() == nullptr) return false;
  value = *found->Number();
  EM_TRACE_ALWAYS(3, "\n%-20s: Read module property \"%s\" = %d (0x%02X)", module, property, value,
                  static_cast<unsigned>(value));
  return true;
}

bool ModuleConfigFile::SetModuleProperty(const char* module, const char* property, std::int32_t value) {
  const RegistryHandle key = registry_.CreateKey(HKEY_LOCAL_MACHINE, ModuleKeyPath(module).c_str());
  const bool done = registry_.SetValue(key, property, RegistryValue::Dword(value)) && registry_.SaveTree();
  EM_TRACE_ALWAYS(3, "\n%-20s: Write module property \"%s\" = %d (%s)", module, property, value,
                  done ? "OK" : "FAILED");
  return done;
}

}  // namespace emstatus
