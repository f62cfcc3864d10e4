#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "config/RequestString.h"
#include "config/StatusValue.h"

namespace emstatus {

enum class Category { Unknown = 0, Mandatory = 1, Optional = 2, Redundant = 3, Inactive = 4 };

enum class QueryContext { None = 0, Triq = 1, Snmp = 2 };

/// The most instances that a component can have in a cabinet: a larger number can only be an error, and would
/// keep the scan busy.
inline constexpr std::int32_t kMaxInstances = 65536;

/// What a raw value of the host means.
struct MappedStatus {
  StatusValue status = NoStatus;
  /// The raw value as the configuration writes it.
  std::string text;
};

/// One component as its configuration section, primary or alternative, defines it. Does not change once read.
struct ComponentDefinition {
  /// The section's name without "Component."; an alternative's ends in ".alt".
  std::string name;
  /// Fixed display name; empty when it is requested from the host.
  std::string displayName;
  std::string instanceName;
  std::string source;
  std::string objectName;
  Category category = Category::Optional;
  QueryContext queryContext = QueryContext::None;
  std::uint8_t instanceBaseIndex = 0;
  /// Ask for every cabinet, not for the server's alone.
  bool handleCabinets = false;
  /// Constant number of instances; 0 when it is requested or there is just one.
  std::int32_t nrInstances = 0;
  /// False for a component that is only asked in check-inactive cycles until it answers.
  bool enabled = false;
  /// An alternative definition, "<name>.alt", stands beside this one.
  bool hasAlternative = false;

  RequestRecord displayNameRequest;
  RequestRecord statusRequest;
  RequestRecord cssRequest;
  RequestRecord nrInstancesRequest;
  RequestRecord redundancyRequest;
  RequestRecord designationRequest;
  RequestRecord targetHostRequest;
  RequestRecord statusConfirm;

  std::map<std::int32_t, MappedStatus> statusMap;
  /// For raw values that `statusMap` does not hold.
  std::optional<StatusValue> undefinedStatus;
  /// Raw redundancy value to target; a target other than 0 means that the fault is still covered.
  std::map<std::int32_t, std::int32_t> redundancyMap;

  /// Whether the index of an instance takes the place of the request's own object id.
  bool HasNumberedInstances() const {
    return nrInstances != 0 || instanceBaseIndex != 0 || nrInstancesRequest.IsDefined();
  }

  /// The status of a raw value; "undefined" with `undefinedStatus` when no entry holds it.
  MappedStatus Map(std::int32_t rawValue) const;
};

struct SubsystemDefinition {
  std::string name;
  std::string displayName;
  /// In file order; each is a key of StatusConfiguration::components.
  std::vector<std::string> componentNames;
};

}  // namespace emstatus
