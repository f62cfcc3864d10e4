#include "host/recording/ReplayedModule.h"

#include <poll.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "host/configuration/IniFile.h"
#include "host/machine/Utf8.h"
#include "host/module/CommandReader.h"
#include "host/module/HostCodes.h"
#include "host/recording/RequestKey.h"
#include "host/simulation/SimulationFolder.h"
#include "host/view/NodeNames.h"
#include "host/view/NodeRules.h"

namespace emstatus::host {
namespace {

/// Answers are there at once, so that nothing but the module's own work takes time.
constexpr std::chrono::milliseconds kLongestReplayedScan{60000};
/// After so long a module is woken: another one than ours may wait for that.
constexpr std::chrono::milliseconds kWakeAfter{1000};

void SetEnvironment(const RecordingHeader& header) {
  for (const auto& [name, value] : header.environment) {
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
}

}  // namespace

ReplayedModule::ReplayedModule(const std::string& library, const std::string& configuration,
                               const RecordingHeader& header)
    : folderBefore_(std::filesystem::current_path()),
      rules_(ReadConfiguration(IniFile(configuration))),
      configuration_(configuration, header.simulation),
      machine_(header.extensionCabinets) {
  std::filesystem::current_path(configuration_.Folder());
  SetEnvironment(header);
  host_ = std::make_unique<Host>(machine_, notices_, Host::ScanObserver{[this] { gate_.Pass(); }, [] {}});
  library_ = std::make_unique<ModuleLibrary>(library);
  session_ = std::make_unique<ModuleSession>(library_->Module(), *host_, machine_);
  places_ = std::make_unique<ComponentPlaces>(*session_);
}

ReplayedModule::~ReplayedModule() {
  gate_.Open();
  places_.reset();
  session_.reset();
  library_.reset();
  std::error_code ignored;
  std::filesystem::current_path(folderBefore_, ignored);
}

/// Puts the file in place that the module reads before that scan.
void ReplayedModule::Simulate(const RecordedScan* scan) const {
  if (scan == nullptr || !scan->simulation) {
    return;
  }
  const SimulationFolder folder(configuration_.Folder());
  if (scan->simulation->text) {
    folder.Replace(*scan->simulation->text);
  } else {
    static_cast<void>(folder.Remove());
  }
}

/// Waits for what `happens` waits for, a while each time.
void ReplayedModule::WaitFor(const std::function<bool(std::chrono::milliseconds)>& happens) {
  for (auto waited = kWakeAfter; !happens(kWakeAfter); waited += kWakeAfter) {
    if (waited >= kLongestReplayedScan) {
      throw std::runtime_error("the module does not make the next scan; --trace 2 tells what it is doing.");
    }
    session_->WakeUp();
  }
}

std::string ReplayedModule::SubjectOf(const Request& event) {
  switch (TreeCode(event.code)) {
    case TreeCode::SystemStatus:
      return "System";
    case TreeCode::InstanceStatus: {
      const std::uint32_t subsystem = event.extension >> 16;
      const std::uint32_t component = event.extension & 0xFFFF;
      std::string instance = session_->InstanceId(subsystem, component, event.object, event.cabinet);
      if (instance.empty()) {
        instance = std::to_string(event.object) + "-" + std::to_string(event.cabinet);
      }
      return CleanUtf8(session_->SubsystemId(subsystem) + "/" + session_->ComponentId(subsystem, component) +
                       "/" + instance);
    }
    default:
      break;
  }
  return PlaceText(event);
}

ReplayedEvent ReplayedModule::MakeEvent(const Request& event) {
  return {event, SubjectOf(event), NumberOf(event.data).value_or(0)};
}

ReplayedScan ReplayedModule::Scan(const RecordedScan& scan, const RecordedScan* following) {
  machine_.Advance(scan);
  if (!std::exchange(runs_, true)) {
    Simulate(&scan);
    session_->Run();
  }
  // Only when it is held, the module has read the file for this scan.
  WaitFor([this](auto limit) { return gate_.WaitUntilHeld(limit); });
  Simulate(following);
  gate_.LetOne();
  ReplayedScan result;
  for (;;) {
    WaitFor([this](auto limit) {
      pollfd descriptor{notices_.Descriptor(), POLLIN, 0};
      return poll(&descriptor, 1, int(limit.count())) > 0;
    });
    for (const Notice& notice : notices_.Take()) {
      if (notice.kind == Notice::Kind::Event) {
        result.events.push_back(MakeEvent(notice.event));
      } else if (notice.kind == Notice::Kind::ScanEnd) {
        const auto tree = session_->TreeText();
        result.tree = tree ? nlohmann::ordered_json::parse(CleanUtf8(*tree)) : nullptr;
        result.systemStatus = session_->SystemStatus().value_or(0);
        result.led = notice.led;
        result.unanswered = machine_.TakeUnanswered();
        return result;
      }
    }
  }
}

Report ReplayedModule::MakeReport(const ReplayedScan& scan, std::chrono::system_clock::time_point time) {
  Report report;
  report.time = time;
  report.root = ReadStatusTree(scan.tree.dump());
  NameNodes(report.root, [this](const auto& subsystem, const auto& component, auto index, auto cabinet) {
    return places_->InstanceId(subsystem, component, index, cabinet);
  });
  DropAbsent(report.root);
  AttachObjects(report.root, machine_, ModuleSession::kServerCabinet);
  ApplyRules(report.root, rules_);
  AttachConstantObjects(report.root, rules_, machine_, ModuleSession::kServerCabinet);
  CountCoverage(report.root);
  TellMargins(report.root, rules_);
  report.systemStatus = scan.systemStatus;
  report.led = scan.led;
  return report;
}

}  // namespace emstatus::host
