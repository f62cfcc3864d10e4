#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// The whole command line: every command with its options. [main thread]
class Program {
 public:
  Program();

  /// Runs what the command line says; the exit code. Help and errors go to where they belong.
  int Run(int argc, const char* const* argv);

  const CLI::App& CommandLine() const { return app_; }

 private:
  int RunCommand(int argc, const char* const* argv);

  CLI::App app_;
  std::vector<std::pair<CLI::App*, std::function<int()>>> commands_;
  const CLI::App* checkPlugin_ = nullptr;
};

}  // namespace emstatus::host
