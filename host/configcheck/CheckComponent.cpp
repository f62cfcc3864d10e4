#include <algorithm>

#include "host/configcheck/Checks.h"

namespace emstatus::host {
namespace {

constexpr std::int32_t kLargestBaseIndex = 255;

void CheckUse(const ConfigurationCheck& check, const Definition& definition) {
  const Problems::Place place{definition.line, definition.section};
  const std::string left =
      definition.name.ends_with(".alt") ? "the alternative is left out" : "the component is left out";
  if (!definition.displayNameRequest.IsDefined() && definition.displayName.empty()) {
    check.problems.Error(place, "it has no display name, so that " + left, "write DisplayName=");
  }
  if (definition.statusMap.empty() && definition.redundancyMap.empty()) {
    check.problems.Error(place,
                         definition.otherStatus
                             ? "it has no map entry but the one for all others, so that " + left
                             : "it has no map entry that can be used, so that " + left,
                         "write Status.Good=OK 0 and what else the host answers");
  }
  if (definition.context == "SNMP" && !definition.name.ends_with(".alt")) {
    check.problems.Warning(PlaceOf(check.ini, definition.section, "StatusRequest"),
                           "SNMP is not asked here, so that " + left +
                               (definition.hasAlternative ? ", and its alternative with it" : ""),
                           "write Context=\"TRIQ\", and a request that the host answers");
  }
  if (definition.statusRequest.line == 0) {
    check.problems.Error(place, "it has no StatusRequest, so that it never has a status",
                         "write one, or take the section out");
  }
}

void CheckCategory(const ConfigurationCheck& check, const Definition& definition) {
  const Problems::Place place = PlaceOf(check.ini, definition.section, "Category");
  if (definition.category == Category::Unknown) {
    const std::string word = check.ini.Value(definition.section, "Category").value_or("");
    check.problems.Error(place, Quoted(word) + " is no category; the component is taken as Optional",
                         DidYouMean(word, {"Mandatory", "Optional", "Redundant", "Inactive"},
                                    "write Mandatory, Optional or Inactive"));
  } else if (definition.category == Category::Redundant) {
    check.problems.Note(place, "Redundant is reserved and means the same as Optional",
                        "write Optional; redundancy is said by RedundancyRequest");
  } else if (definition.category == Category::Inactive && check.configuration.advancedPollingCycles == 0) {
    check.problems.Error(place,
                         "with AdvancedPollingCycles=0, a component that begins inactive is never asked",
                         "write Optional, or give AdvancedPollingCycles at least 2");
  }
}

void CheckInstances(const ConfigurationCheck& check, const Definition& definition) {
  const std::string& section = definition.section;
  for (const char* key : {"NrInstances", "InstanceBaseIndex", "HandleCabinets"}) {
    CheckNumber(check.ini, section, key, 0, check.problems);
  }
  const Problems::Place number = PlaceOf(check.ini, section, "NrInstances");
  const std::int32_t written = check.ini.Number(section, "NrInstances", 0);
  if (written < 0) {
    check.problems.Error(number, "a number of instances below 0 means that none is asked",
                         "write the number of instances");
  } else if (written > Configuration::kMostInstances) {
    check.problems.Error(number,
                         std::to_string(written) + " instances are too many; " +
                             std::to_string(Configuration::kMostInstances) + " are asked",
                         "write a smaller number");
  }
  if (written != 0 && definition.nrInstancesRequest.line != 0) {
    check.problems.Error(number,
                         "NrInstances and NrInstancesRequest exclude each other; NrInstances counts, and the "
                         "instances show as one node",
                         "take one of them out");
  }
  const std::int32_t base = check.ini.Number(section, "InstanceBaseIndex", 0);
  const Problems::Place index = PlaceOf(check.ini, section, "InstanceBaseIndex");
  if (base < 0 || base > kLargestBaseIndex) {
    check.problems.Error(
        index,
        std::to_string(base) + " does not fit; " + std::to_string(definition.instanceBaseIndex) + " is used",
        "write 0 to 255");
  } else if (base != 0 && written == 0 && !definition.nrInstancesRequest.IsDefined()) {
    check.problems.Note(index, "there is just one instance; its number takes the place of OI",
                        "write the number as OI of the request instead");
  }
}

void CheckUseless(const ConfigurationCheck& check, const Definition& definition) {
  const auto place = [&](const char* key) { return PlaceOf(check.ini, definition.section, key); };
  if (definition.displayNameRequest.IsDefined() && check.ini.Value(definition.section, "DisplayName")) {
    check.problems.Note(place("DisplayName"), "DisplayNameRequest is there, so that it is not looked at",
                        "take one of them out");
  }
  if (definition.designationRequest.IsDefined() && !definition.HasInstances()) {
    check.problems.Note(place("DesignationRequest"),
                        "it is asked, but only instances that the host counts show their designations",
                        "use DisplayNameRequest, or take it out");
  }
  if (definition.redundancyRequest.IsDefined() && definition.redundancyEntries.empty()) {
    check.problems.Warning(place("RedundancyRequest"),
                           "without a Redundancy. entry its answer changes nothing",
                           "write Redundancy.Enough=1 2");
  }
  if (!definition.redundancyEntries.empty() && definition.redundancyRequest.line == 0) {
    check.problems.Warning({definition.redundancyEntries.front().line, definition.section,
                            definition.redundancyEntries.front().key},
                           "without a RedundancyRequest it is never looked at",
                           "write the request, or take the entry out");
  }
}

}  // namespace

void CheckComponent(const ConfigurationCheck& check, const Definition& definition) {
  CheckUse(check, definition);
  CheckCategory(check, definition);
  CheckInstances(check, definition);
  CheckUseless(check, definition);
  CheckRequests(check, definition);
  CheckMaps(check, definition);
}

}  // namespace emstatus::host
