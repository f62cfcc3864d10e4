#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/configuration/MapEntry.h"
#include "host/configuration/RequestElement.h"

namespace emstatus::host {

enum class Category { Unknown, Mandatory, Optional, Redundant, Inactive };

/// A request string, also one that the module cannot use.
struct ConfiguredRequest {
  std::string key;
  /// 0: the component has no such key.
  std::size_t line = 0;
  /// After the expansion of variables; empty when the module cannot use it.
  std::string text;
  /// The element, also one of another name than CMD; nothing when it is not well-formed.
  std::optional<RequestElement> element;
  /// Why there is no element.
  std::string problem;

  /// The module sends it.
  bool IsDefined() const { return !text.empty(); }
};

/// One "Component." section as the module reads it.
struct Definition {
  /// The section's name without "Component."; an alternative's ends in ".alt".
  std::string name;
  std::string section;
  /// Of the section's header; 0 when there is no such section.
  std::size_t line = 0;
  /// The module uses it: it has a display name and a map entry.
  bool isUsable = false;

  /// Empty when it is requested from the host.
  std::string displayName;
  std::string instanceName;
  std::string source;
  std::string objectName;
  Category category = Category::Optional;
  /// "TRIQ", "SNMP" or another; empty without one.
  std::string context;
  std::uint8_t instanceBaseIndex = 0;
  bool handlesCabinets = false;
  std::int32_t nrInstances = 0;
  bool hasAlternative = false;

  ConfiguredRequest displayNameRequest;
  ConfiguredRequest statusRequest;
  ConfiguredRequest cssRequest;
  ConfiguredRequest nrInstancesRequest;
  ConfiguredRequest redundancyRequest;
  ConfiguredRequest designationRequest;
  ConfiguredRequest targetHostRequest;
  ConfiguredRequest statusConfirm;

  /// Every map entry in the order of the file, also what the module passes over.
  std::vector<MapEntry> statusEntries;
  std::vector<MapEntry> redundancyEntries;

  /// What counts: places in the lists above by raw value.
  struct Mapping {
    std::size_t entry = 0;
    /// The status, or the target of a redundancy.
    std::int32_t value = 0;
  };
  std::map<std::int32_t, Mapping> statusMap;
  std::map<std::int32_t, Mapping> redundancyMap;
  /// For raw values that `statusMap` does not hold.
  std::optional<Mapping> otherStatus;

  /// The tree shows each of its instances as a node of its own.
  bool HasInstances() const { return nrInstances == 0 && nrInstancesRequest.IsDefined(); }

  /// Each instance is asked by its number, instead of by the request's own.
  bool HasNumberedInstances() const {
    return nrInstances != 0 || instanceBaseIndex != 0 || nrInstancesRequest.IsDefined();
  }

  /// The mapping of a raw value; null when nothing covers it.
  const Mapping* Find(std::int32_t rawState) const;
};

}  // namespace emstatus::host
