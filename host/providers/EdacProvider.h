#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/ErrorHistory.h"
#include "host/providers/Provider.h"
#include "host/providers/StateFile.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// Corrected errors a day of one memory module from which its failure is predicted.
inline constexpr std::uint64_t kCorrectedPerDay = 50;

/// The reading of a memory module, without id and name, from its history. [any thread]
Reading JudgeMemoryModule(const ErrorHistory& history, std::int64_t now);

/// Memory modules by the error counters of their controllers (EDAC). What was counted is kept over restarts.
class EdacProvider final : public Provider {
 public:
  /// `stateFolder` empty: nothing is kept.
  EdacProvider(std::unique_ptr<SystemFiles> files, const std::string& stateFolder);

  std::string_view Name() const override { return "memory modules"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(10); }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Forgets the errors of a module so far, and a module that is gone.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;

 private:
  /// A pair of counters with what they belong to.
  struct Module {
    std::string id;
    std::string name;
    std::string countersFolder;
    std::string correctedName;
    std::string uncorrectedName;
    std::optional<std::int64_t> since;
  };

  std::vector<Module> FindModules(std::int64_t now);
  void AddController(std::vector<Module>& modules, const std::string& controller, std::int64_t now);
  bool AddDimms(std::vector<Module>& modules, const std::string& folder, const Module& controller);
  bool AddRows(std::vector<Module>& modules, const std::string& folder, const Module& controller);
  std::string LabelIn(const std::string& path);
  Reading ReadModule(const Module& module, std::int64_t now);
  void TellGone(std::vector<Reading>& readings, const std::vector<Module>& modules);
  void Load();
  void Save(std::vector<Reading>& readings);
  std::optional<std::int64_t> Number(const std::string& path);

  const std::unique_ptr<SystemFiles> files_;
  StateFile state_;
  bool isLoaded_ = false;
  std::map<std::string, ErrorHistory> histories_;
  /// As they were last seen, for modules that are gone.
  std::map<std::string, std::string> names_;
};

}  // namespace emstatus::host
