#include "status/ComponentQuery.h"

#include <algorithm>

#include "platform/CDebugClient.h"
#include "status/MergeStatus.h"

namespace emstatus {
namespace {

/// A raw value that the host does not know itself.
constexpr std::int32_t kUnknownRawValue = -1;

}  // namespace

bool ComponentQuery::QueryComponentStatus() {
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : component active = %d, fail count = %d", component_.active,
           static_cast<int>(component_.failCount));
  if (!IsAsked()) return false;
  const auto& cabinets = environment_.cabinets;
  const std::size_t asked =
      definition_.handleCabinets ? cabinets.size() : std::min<std::size_t>(1, cabinets.size());
  severalCabinets_ = asked > 1;
  for (std::size_t i = 0; i < asked; ++i) QueryCabinet(cabinets[i]);
  component_.found.status = newStatus_;
  return CountFailures();
}

bool ComponentQuery::IsAsked() {
  if (component_.active) return true;
  if (!environment_.cycle.checkInactive) {
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> component is not active - ignored!");
    return false;
  }
  EM_TRACE(3, "\nEM_STATUS (QUERY)   :   -> re-check INACTIVE component");
  return true;
}

void ComponentQuery::QueryCabinet(std::uint32_t cabinet) {
  if (severalCabinets_) {
    EM_TRACE(3, "\n\nEM_STATUS (QUERY)   : checking cabinet %d...", static_cast<int>(cabinet));
  }
  std::int64_t instances = NumberOfInstances(cabinet);
  const std::int64_t base = definition_.instanceBaseIndex;
  if (base != 0) EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> instance base index = %d", static_cast<int>(base));
  if (component_.hasInstances) {
    EM_TRACE(4, "\nEM_STATUS (QUERY)   : Read status of component instances");
  } else {
    EM_TRACE(4, "\nEM_STATUS (QUERY)   : Read status of component");
  }
  for (std::int64_t index = base; index < base + instances && !environment_.switchShutdown; ++index) {
    if (!QueryInstance(static_cast<std::uint32_t>(index), cabinet)) continue;
    ++instances;
    component_.hasInstances = true;
    EM_TRACE(
        3,
        "\nEM_STATUS (QUERY)   : SNMP GETNEXT -> repeat request with next OID; maxInstances incremented to %d",
        static_cast<int>(instances));
  }
  FinishCabinet();
}

std::int64_t ComponentQuery::NumberOfInstances(std::uint32_t cabinet) {
  if (definition_.nrInstances != 0) {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> number of instances = %d (constant)", definition_.nrInstances);
    if (definition_.nrInstancesRequest.IsDefined()) {
      EM_TRACE(
          1,
          "\n\nEM_STATUS (QUERY)   : ## ERROR! Constant \"NrInstances\" and \"NrInstancesRequest\" definition found at same component \"%d\" - fix this!!\n",
          definition_.nrInstances);
    }
    return definition_.nrInstances;
  }
  if (!definition_.nrInstancesRequest.IsDefined()) return 1;

  component_.hasInstances = true;
  EM_TRACE(4, "\n\nEM_STATUS (QUERY)   : request number of instances: %s...",
           definition_.nrInstancesRequest.text.c_str());
  const auto count = environment_.host.QueryInteger(definition_.nrInstancesRequest, {.cabinet = cabinet});
  if (count && *count <= kMaxInstances) {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> number of instances = %d", *count);
    return *count;
  }
  if (count) {
    EM_TRACE(1, "\nEM_STATUS (QUERY)   : ## ERROR! %d instances of component \"%s\" are more than %d!",
             *count, definition_.name.c_str(), kMaxInstances);
  }
  EM_TRACE(3, "\nEM_STATUS (QUERY)   :   number of instances (by query): FAILED - no instances!");
  return 0;
}

bool ComponentQuery::QueryInstance(std::uint32_t index, std::uint32_t cabinet) {
  const Position position{
      index,
      cabinet,
      {.objectIndex = definition_.HasNumberedInstances() ? index : QueryTarget::kAsRequested,
       .cabinet = cabinet}};
  if (!HasTargetHost(position)) return false;
  EM_TRACE(2, "\nEM_STATUS (QUERY)   : query status value for instance #%d...", static_cast<int>(index));
  const auto answer = environment_.host.QueryStatus(definition_.statusRequest, position.target);
  if (!answer) return false;

  ComponentInstance& instance = RecordInstance(position, answer->value);
  AskDesignation(position, instance);
  MappedStatus mapped = MapRawValue(answer->value);
  Simulate(instance, mapped);
  instance.status = mapped.status;
  EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> mapped status:          %s (%d) -> \"%s\"",
           environment_.configuration.StatusName(mapped.status), mapped.status, mapped.text.c_str());
  if (environment_.cycle.probing && mapped.status != NoStatus) {
    AskDisplayName(position);
    AskCss(position, instance);
  }
  MergeInstance(position, answer->value, mapped);
  AskRedundancy(position);
  result_ = true;
  return answer->repeat;
}

bool ComponentQuery::HasTargetHost(const Position& position) {
  if (!definition_.targetHostRequest.IsDefined()) return true;
  EM_TRACE(4, "\nEM_STATUS (QUERY)   : target host request string available, request host...");
  const auto host = environment_.host.QueryString(definition_.targetHostRequest, position.target);
  if (!host || host->empty()) {
    EM_TRACE(4, "\nEM_STATUS (QUERY)   :   -> target host request available but no value set -> skip query");
    return false;
  }
  EM_TRACE(4, "\nEM_STATUS (QUERY)   :   -> target host request = \"%s\"; insert into request string",
           host->c_str());
  return true;
}

ComponentInstance& ComponentQuery::RecordInstance(const Position& position, std::int32_t rawValue) {
  ComponentInstance& instance = component_.found.instances[InstanceKey(position.cabinet, position.index)];
  instance.instanceId = definition_.instanceName + std::to_string(static_cast<std::int32_t>(position.index));
  if (severalCabinets_) {
    instance.instanceId += '-' + std::to_string(static_cast<std::int32_t>(position.cabinet));
  }
  instance.cabinet = position.cabinet;
  instance.index = position.index;
  instance.rawValue = static_cast<std::uint32_t>(rawValue);
  EM_TRACE(
      4,
      "\nEM_STATUS (QUERY)   :   set instance data in the component's instances list (instance index=%d, cabinetNr=%d)...",
      static_cast<int>(position.index), static_cast<int>(position.cabinet));
  EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> instance ID:            \"%s\"", instance.instanceId.c_str());
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> object instance status: %d", rawValue);
  return instance;
}

void ComponentQuery::AskDesignation(const Position& position, ComponentInstance& instance) {
  const RequestRecord& request = definition_.designationRequest;
  if (!environment_.cycle.probing || !instance.designation.empty() || !request.IsDefined()) return;
  EM_TRACE(3, "\nEM_STATUS (QUERY)   :   get component instance designation name: %s", request.text.c_str());
  instance.designation = environment_.host.QueryString(request, position.target).value_or("");
  if (instance.designation.empty()) {
    EM_TRACE(
        2,
        "\n\nEM_STATUS (QUERY)   : ## WARNING! Designation name request available but no designation name!\n");
  } else {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> instance designation:   \"%s\"", instance.designation.c_str());
  }
}

MappedStatus ComponentQuery::MapRawValue(std::int32_t rawValue) const {
  if (rawValue == kUnknownRawValue) return {NoStatus, "unknown"};
  return definition_.Map(rawValue);
}

void ComponentQuery::Simulate(ComponentInstance& instance, MappedStatus& mapped) {
  const std::string& name = component_.hasInstances ? instance.instanceId : definition_.name;
  const char* kind = component_.hasInstances ? "instance" : "component";
  const auto entry = environment_.simulation.Find(name);
  if (!entry) return;
  if (entry->objectStatus == SimulationEntry::kNotSimulated) {
    mapped.status = entry->mappedStatus;
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : ## Simulate \"%s\" %s mapped status --> %d", name.c_str(), kind,
             mapped.status);
  } else {
    mapped = {definition_.Map(entry->objectStatus).status, "*** simulated ***"};
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : ## Simulate \"%s\" %s object status --> %d", name.c_str(), kind,
             entry->objectStatus);
  }
  if (entry->isCss != SimulationEntry::kNotSimulated) {
    CssFlag(instance) = static_cast<std::uint32_t>(entry->isCss);
    EM_TRACE(2, "\nEM_STATUS (QUERY)   :     CSS = %d", entry->isCss);
  }
}

std::uint32_t& ComponentQuery::CssFlag(ComponentInstance& instance) {
  return component_.hasInstances ? instance.css : component_.css;
}

void ComponentQuery::AskDisplayName(const Position& position) {
  const RequestRecord& request = definition_.displayNameRequest;
  std::string& displayName = component_.found.displayName;
  if (!displayName.empty() || !request.IsDefined()) return;
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : display name request string: %s", request.text.c_str());
  displayName = environment_.host.QueryString(request, position.target).value_or("");
  if (displayName.empty()) {
    EM_TRACE(2,
             "\n\nEM_STATUS (QUERY)   : ## WARNING! Display name request available but no display name!\n");
  } else {
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> display name: %s", displayName.c_str());
  }
}

void ComponentQuery::AskCss(const Position& position, ComponentInstance& instance) {
  const RequestRecord& request = definition_.cssRequest;
  std::uint32_t& css = CssFlag(instance);
  if (css != kCssUnknown || !request.IsDefined()) return;
  EM_TRACE(4, "\nEM_STATUS (QUERY)   : request string for CSS property: \"%s\"", request.text.c_str());
  const auto answer = environment_.host.QueryInteger(request, position.target);
  if (!answer) return;
  css = *answer != 0;
  const char* negation = css != 0 ? "" : "not ";
  if (component_.hasInstances) {
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> instance #%d is %sa CSS component!",
             static_cast<int>(position.index), negation);
  } else {
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> component is %sa CSS component!", negation);
  }
}

void ComponentQuery::MergeInstance(const Position& position, std::int32_t rawValue,
                                   const MappedStatus& mapped) {
  if (!MergeStatus(newStatus_, mapped.status)) return;
  EM_TRACE(2, "\nEM_STATUS (QUERY)   : -> component status changed to \"%s\" (at index %d)",
           environment_.configuration.StatusName(newStatus_), static_cast<int>(position.index));
  component_.found.rawValue = rawValue;
  component_.found.statusText = mapped.text;
}

void ComponentQuery::AskRedundancy(const Position& position) {
  if (newStatus_ != Error || !definition_.redundancyRequest.IsDefined()) return;
  const auto answer = environment_.host.QueryInteger(definition_.redundancyRequest, position.target);
  if (!answer) return;
  const auto target = definition_.redundancyMap.find(*answer);
  if (target != definition_.redundancyMap.end() && target->second != 0) newStatus_ = Warning;
}

void ComponentQuery::FinishCabinet() {
  if (result_) {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> %d instance(s) with valid status found\n",
             static_cast<int>(component_.found.instances.size()));
  } else if (environment_.cycle.probing) {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   : --> no status avaliable (ignored in probing phase)");
  } else {
    JudgeFailure();
  }
  if (newStatus_ != component_.found.status) {
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : ==> Component \"%s\" status changed from \"%s\" to \"%s\"",
             definition_.name.c_str(), environment_.configuration.StatusName(component_.found.status),
             environment_.configuration.StatusName(newStatus_));
  }
}

void ComponentQuery::JudgeFailure() {
  if (definition_.category == Category::Mandatory) {
    newStatus_ = environment_.configuration.queryFailStatus;
    EM_TRACE(
        1,
        "\nEM_STATUS (QUERY)   : %s: ## ERROR: QuerySystemStatus(): mandatory component query error, set to status %d!\n",
        definition_.name.c_str(), newStatus_);
  } else if (definition_.category == Category::Optional) {
    EM_TRACE(
        3,
        "\nEM_STATUS (QUERY)   : -> no status avaliable (ignored for optional component or in probing phase)");
  } else {
    EM_TRACE(
        1,
        "\nEM_STATUS (QUERY)   : %s: ## ERROR: QuerySystemStatus(): component category from config file is UNKNOWN! FIX THIS!\n",
        definition_.name.c_str());
  }
}

bool ComponentQuery::CountFailures() {
  const auto limit = static_cast<std::uint32_t>(environment_.configuration.advancedPollingCycles);
  if (limit == 0) return result_;
  if (result_) {
    component_.failCount = 0;
    if (!component_.active) {
      EM_TRACE(2, "\nEM_STATUS (QUERY)   : --> component ACTIVE now!");
      component_.active = true;
    }
    return true;
  }
  ++component_.failCount;
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : --> FailCount incremented to %d!",
           static_cast<int>(component_.failCount));
  if (!component_.active) {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   : --> component still INACTIVE!");
  } else if (component_.failCount < limit || definition_.category == Category::Mandatory) {
    EM_TRACE(
        4,
        "\nEM_STATUS (QUERY)   : --> request failed and component active, but FailCount not yet exceeded or mandatory");
  } else {
    EM_TRACE(2, "\nEM_STATUS (QUERY)   : --> FailCount exceeded - set component to INACTIVE!");
    component_.active = false;
  }
  return false;
}

}  // namespace emstatus
