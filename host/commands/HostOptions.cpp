#include "host/commands/HostOptions.h"

#include <filesystem>
#include <system_error>

namespace emstatus::host {
namespace {

constexpr int kHighestTraceLevel = 9;

std::string CheckProvider(const std::string& text) {
  const bool scenario = text.starts_with(kScenarioPrefix) && text != kScenarioPrefix;
  return text == "linux" || scenario ? std::string()
                                     : "expected linux or scenario:FILE, found \"" + text + "\"";
}

std::string CheckCopy(const std::string& folder) {
  std::error_code ignored;
  const std::filesystem::path path(folder);
  const bool isCopy = std::filesystem::is_directory(path / "sys", ignored) ||
                      std::filesystem::is_directory(path / "proc", ignored);
  return isCopy ? "" : "expected a folder with the folder sys or proc in it, found \"" + folder + "\"";
}

}  // namespace

void AddHostOptions(CLI::App& command, HostOptions& options) {
  command
      .add_option("--module", options.module, "The module's library (default: libEM_STATUS.so beside emhost)")
      ->type_name("PATH");
  command
      .add_option("--config", options.configuration,
                  "The folder of EM_STATUS.ini (default: etc beside emhost)")
      ->type_name("DIR");
  command.add_option("--provider", options.provider, "Where readings come from")
      ->check(CLI::Validator(CheckProvider, ""))
      ->type_name("linux|scenario:FILE")
      ->capture_default_str();
  auto* const root =
      command
          .add_option("--root", options.linux.root,
                      "Read the copy of another machine's /proc and /sys that is in this folder")
          ->check(CLI::Validator(CheckCopy, ""))
          ->type_name("DIR");
  command
      .add_option("--trace", options.traceLevel, "The module's trace level; the trace goes to standard error")
      ->check(CLI::Range(0, kHighestTraceLevel).description(""))
      ->type_name("LEVEL");
  command
      .add_option("--filesystem", options.linux.filesystems,
                  "Also read the filesystem that is mounted here, though it is on the network or no disk")
      ->type_name("DIR")
      ->allow_extra_args(false);
  command.add_option("--link", options.linux.requiredLinks, "A network link that must be up")
      ->type_name("NAME")
      ->allow_extra_args(false);
  command.add_option("--process", options.linux.requiredProcesses, "A program that must run")
      ->type_name("NAME")
      ->allow_extra_args(false);
  command.add_option("--unit", options.linux.requiredUnits, "A systemd unit that must be active")
      ->type_name("NAME")
      ->allow_extra_args(false)
      ->excludes(root);
  command
      .add_option("--state", options.linux.stateFolder, "The folder in which counters are kept over restarts")
      ->type_name("DIR");
}

}  // namespace emstatus::host
