#pragma once

#include <functional>
#include <span>

#include <CLI/CLI.hpp>

namespace emstatus::host {

/// A command of the program: adds its options to `command` and returns what runs it, with the exit code as
/// its result. It may throw a std::exception whose text is for people.
struct Subcommand {
  const char* name;
  const char* description;
  std::function<int()> (*setUp)(CLI::App& command);
  /// Who calls it reads standard output alone, and takes every exit code but 3 for a status: help too ends
  /// with 3, and what is wrong with the options is told on standard output.
  bool isCheckPlugin = false;
};

/// All of them, in the order in which help lists them.
std::span<const Subcommand> Subcommands();

}  // namespace emstatus::host
