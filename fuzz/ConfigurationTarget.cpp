// The whole configuration: what holds after any EM_STATUS.ini, and a scan by what was read.
// The input is the file; one that does not name a layout is put behind an "Info" section.

#include <algorithm>

#include "config/ConfigurationReader.h"
#include "data/Command.h"
#include "fuzz/Check.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/ScannedSystem.h"
#include "markup/MarkupReader.h"

namespace emstatus::fuzz {
namespace {

constexpr std::int32_t kMostInstances = 65536;

bool IsName(const std::string& name) {
  return !name.empty() && name.find(' ') == std::string::npos;
}

void CheckRequest(const RequestRecord& request) {
  EM_FUZZ_CHECK(request.IsDefined() == !request.text.empty());
  if (!request.IsDefined()) return;
  EM_FUZZ_CHECK(request.command.name == "CMD");
  const auto again = ReadMarkup(request.text);
  EM_FUZZ_CHECK(again && *again == request.command);
}

void CheckDefinition(const StatusConfiguration& configuration, const ComponentDefinition& component) {
  EM_FUZZ_CHECK(!component.displayName.empty() || component.displayNameRequest.IsDefined());
  EM_FUZZ_CHECK(!component.instanceName.empty());
  EM_FUZZ_CHECK(component.nrInstances <= kMostInstances);
  EM_FUZZ_CHECK(!component.statusMap.empty() || !component.redundancyMap.empty());
  EM_FUZZ_CHECK(component.enabled == (component.category != Category::Inactive));
  for (const auto& [raw, mapped] : component.statusMap) {
    EM_FUZZ_CHECK(configuration.statusNames.contains(mapped.status));
    EM_FUZZ_CHECK(component.Map(raw).text == mapped.text && !mapped.text.empty());
  }
  if (component.hasAlternative)
    EM_FUZZ_CHECK(configuration.FindComponent(component.name + ".alt") != nullptr);
  for (const RequestRecord* request :
       {&component.displayNameRequest, &component.statusRequest, &component.cssRequest,
        &component.nrInstancesRequest, &component.redundancyRequest, &component.designationRequest,
        &component.targetHostRequest, &component.statusConfirm}) {
    CheckRequest(*request);
  }
}

void CheckConfiguration(const StatusConfiguration& configuration) {
  for (const auto& [name, status] : configuration.statusValues) {
    EM_FUZZ_CHECK(!name.empty() && configuration.statusNames.contains(status));
  }
  for (const auto& [status, name] : configuration.statusNames) {
    EM_FUZZ_CHECK(configuration.statusValues.contains(name));
  }
  for (const auto& [name, component] : configuration.components) {
    EM_FUZZ_CHECK(IsName(name) && component.name == name);
    CheckDefinition(configuration, component);
  }
  for (const SubsystemDefinition& subsystem : configuration.subsystems) {
    EM_FUZZ_CHECK(IsName(subsystem.name) && !subsystem.displayName.empty());
    for (const std::string& name : subsystem.componentNames) {
      const ComponentDefinition* component = configuration.FindComponent(name);
      EM_FUZZ_CHECK(component != nullptr && component->queryContext != QueryContext::Snmp);
    }
  }
}

/// Probing, a cycle that asks inactive components, and one of the rest.
void ScanBy(StatusConfiguration configuration) {
  std::uint32_t answers = 0;
  ScannedSystem system([&answers](HostCommand& command) {
    ++answers;
    if (answers % 7 == 0) return static_cast<void>(SetStatus(command, 1));
    if (answers % 5 == 0) return static_cast<void>(SetDataString(command, "text"));
    SetDataWord(command, answers % 4);
  });
  system.requestsLeft = 300;
  for (const std::uint32_t cabinet : {0U, 7U}) system.cabinets.Append(cabinet);
  const auto cycles = static_cast<std::uint32_t>(configuration.advancedPollingCycles);
  system.configuration.Replace(std::move(configuration));
  for (const std::uint64_t cycle : {std::uint64_t{1}, std::uint64_t{cycles}, std::uint64_t{cycles} + 1}) {
    system.Scan(cycle);
  }
  system.AskEverything();
}

void ReadAndScan(std::string_view text) {
  static MemoryFile file;
  file.Write(text);
  ConfigurationReader reader(
      [](std::string& path) {
        path = file.Path();
        return true;
      },
      [] { return false; });
  StatusConfiguration configuration;
  if (!reader.ReadConfigurationFile(configuration)) return;
  CheckConfiguration(configuration);
  ScanBy(std::move(configuration));
}

}  // namespace
}  // namespace emstatus::fuzz

namespace {

/// Lists of many names, each repeated in the other, would take their time and show nothing new.
bool HasShortLists(std::string_view text) {
  constexpr std::ptrdiff_t kMostSeparators = 120;
  return std::ranges::count(text, ' ') <= kMostSeparators;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (!HasShortLists(text)) return 0;
  const bool whole = text.find("LayoutVersion") != std::string_view::npos;
  std::string file = whole ? "" : "[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=4\n";
  emstatus::fuzz::ReadAndScan(file.append(text));
  return 0;
}
