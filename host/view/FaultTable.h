#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/machine/Fault.h"
#include "host/view/StatusWords.h"

/// What each single fault does to a system: text and JSON. [any thread]
namespace emstatus::host {

/// Where a part stands, in words for people.
struct FaultPlace {
  std::string subsystem;
  std::string component;
  /// Of the component, in the configuration.
  std::string section;
  std::string part;
  ObjectAddress address;

  friend bool operator==(const FaultPlace&, const FaultPlace&) = default;
};

/// What is to be seen while a fault lasts.
struct FaultEffect {
  std::uint32_t part = 0;
  std::uint32_t component = 0;
  std::uint32_t subsystem = 0;
  std::uint32_t system = 0;
  /// The value of the error LED.
  std::uint32_t led = 0;
  /// Events that the module sent of instances and of the system, and changes of the LED.
  std::size_t instanceEvents = 0;
  std::size_t systemEvents = 0;
  std::size_t ledChanges = 0;
  /// Other parts of the tree whose status changed ("Filesystems, Health, /").
  std::vector<std::string> others;
  /// A status is another than without the fault, or there was an event.
  bool shows = false;
  /// Scans from the beginning of the fault until all of this was to be seen; 0: not even a raw state changed.
  std::size_t scans = 0;
  /// All is as before after the fault, within some scans.
  bool ends = true;

  friend bool operator==(const FaultEffect&, const FaultEffect&) = default;
};

/// Faults of one part that have the same effect.
struct FaultRow {
  FaultPlace place;
  std::vector<Fault> faults;
  FaultEffect effect;

  /// Whether the configuration passes over the fault or does not find back: not when a part merely keeps its
  /// status because it is not answered for.
  bool IsWrong() const;
};

struct FaultTable {
  /// With everything good.
  std::uint32_t system = 0;
  std::uint32_t led = 0;
  /// Parts that are something else than good although everything is ("Sensors, Inlet: Warning").
  std::vector<std::string> neverGood;
  /// Parts whose status is that of no object, so that they could not be made to fail.
  std::vector<std::string> notForced;
  /// Objects that nothing asked about ("thermal-zone, acpitz").
  std::vector<std::string> notAsked;
  /// In the order of the tree.
  std::vector<FaultRow> rows;
};

/// Adds the effect of a fault to the row of the same part and effect, or as a new row.
void AddFault(FaultTable& table, const FaultPlace& place, Fault fault, const FaultEffect& effect);

/// Whether any row is wrong.
bool HasWrongRows(const FaultTable& table);

std::string FaultTableText(const FaultTable& table, const StatusWords& words, bool colours);

nlohmann::ordered_json FaultTableJson(const FaultTable& table, const StatusWords& words);

}  // namespace emstatus::host
