#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// Makes a SystemFiles for one more thread.
using FilesFactory = std::function<std::unique_ptr<SystemFiles>()>;

/// Runs the reads of single devices beside the provider's own thread, so that one that hangs holds up neither
/// the other devices nor the provider. Usually a single thread serves them all; only when a device does not
/// answer is it left alone with its thread, and others go on with the rest. [worker of one
/// provider]
class ReadLanes {
 public:
  using Job = std::function<void(SystemFiles&)>;

  /// Devices that may hang at the same time before the others have to wait for one of them.
  static constexpr std::size_t kMostThreads = 32;
  static constexpr std::chrono::milliseconds kPatience{400};

  /// `patience`: the time that one device may take before the others no longer wait for it.
  explicit ReadLanes(FilesFactory makeFiles, std::chrono::milliseconds patience = kPatience);
  ReadLanes(const ReadLanes&) = delete;
  ReadLanes& operator=(const ReadLanes&) = delete;
  /// Waits a moment for the threads. One that hangs in the kernel is left behind; it uses nothing of this
  /// object.
  ~ReadLanes();

  /// Runs each job, in order, unless the one before it of the same key is still running. Returns when each
  /// has ended or used up its patience. A job may outlive this object, so it must own what it uses.
  void Run(std::vector<std::pair<std::string, Job>> jobs);

  /// Whether a job of this key is still running.
  bool IsRunning(const std::string& key) const;

 private:
  struct Shared;
  static void Work(const std::shared_ptr<Shared>& shared);
  void AddThread();

  std::chrono::milliseconds patience_;
  std::shared_ptr<Shared> shared_;
};

}  // namespace emstatus::host
