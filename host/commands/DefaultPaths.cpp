#include "host/commands/DefaultPaths.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace emstatus::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLibrary = "libEM_STATUS.so";
constexpr const char* kConfiguration = "EM_STATUS.ini";

std::string Below(const std::string& folder, const char* rest) {
  return (fs::path(folder) / rest).lexically_normal().string();
}

bool HasConfiguration(const std::string& folder) {
  std::error_code ignored;
  return fs::exists(fs::path(folder) / kConfiguration, ignored);
}

}  // namespace

std::string ProgramFolder() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  return error ? std::string(".") : program.parent_path().string();
}

std::vector<std::string> ModuleCandidates(const std::string& programFolder) {
  return {
      Below(programFolder, kLibrary),
      // A build tree.
      Below(programFolder + "/../module", kLibrary),
      Below(EMHOST_LIBRARY_FOLDER, kLibrary),
  };
}

std::vector<std::string> ConfigurationCandidates(const std::string& programFolder) {
  return {
      Below(programFolder, "etc"),
      Below(programFolder, "../etc"),
      // A build tree below the source tree.
      Below(programFolder, "../../etc"),
      Below(programFolder, "../../../etc"),
      EMHOST_CONFIGURATION_FOLDER,
  };
}

std::string FindConfiguration(const std::string& wanted, const std::vector<std::string>& candidates) {
  if (!wanted.empty()) {
    if (!HasConfiguration(wanted)) {
      throw std::runtime_error("there is no EM_STATUS.ini in " + wanted + ", which --config names.");
    }
    return fs::absolute(wanted).lexically_normal().string();
  }
  std::string list;
  for (const std::string& candidate : candidates) {
    if (HasConfiguration(candidate)) {
      return fs::absolute(candidate).lexically_normal().string();
    }
    list += "\n  " + candidate;
  }
  throw std::runtime_error("EM_STATUS.ini was not found. Looked in:" + list +
                           "\nName its folder with --config.");
}

}  // namespace emstatus::host
