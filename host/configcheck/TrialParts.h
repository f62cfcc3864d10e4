#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/configcheck/Trial.h"
#include "host/providers/Provider.h"

namespace emstatus::host {

/// The parts of a machine in which every component of a configuration has something that can fail, as its
/// providers read them. [any thread]
class TrialParts {
 public:
  /// Sees to it that there is the part of a trial, with those of its class before it.
  void Add(const Trial& trial);

  /// From the next read on the trial's part is bad, and all others are good.
  void Fail(const Trial& trial);
  /// From the next read on all are good, but late as soon as they are read.
  void Silence();
  /// From the next read on all is good.
  void Restore();

  std::vector<Reading> Read() const;
  /// Fails as a whole while a trial of the class of health sources does.
  void ReadSource() const;

 private:
  /// Class and name.
  using Key = std::pair<ObjectClass, std::string>;
  static Key KeyOf(const Trial& trial);

  mutable std::mutex lock_;
  // Guarded by lock_
  std::vector<std::pair<Key, Reading>> parts_;
  std::optional<std::pair<Key, Reading>> failing_;
  bool silent_ = false;
};

/// The providers of the parts, each reading only when it is hurried. The first one is the health source that
/// can fail.
std::vector<std::unique_ptr<Provider>> MakeTrialProviders(const std::shared_ptr<TrialParts>& parts);

}  // namespace emstatus::host
