#include "host/commands/RunningHost.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string_view>

#include "host/commands/DefaultPaths.h"
#include "host/machine/ProviderMachine.h"
#include "host/machine/ScenarioMachine.h"
#include "host/view/NodeNames.h"
#include "host/view/NodeRules.h"
#include "host/view/SimulatedNodes.h"

namespace emstatus::host {
namespace {

/// A slow device may still be unread when the first scan begins; it then appears in a later one.
constexpr std::chrono::milliseconds kFirstReading{3000};

}  // namespace

void SetTraceLevel(int level) {
  if (level >= 0) {
    setenv("QX_LOG_DEBUG_LEVEL", std::to_string(level).c_str(), 1);
  }
}

std::string AbsoluteModule(const std::string& wanted) {
  const std::string path = wanted.empty() ? FindModule(ModuleCandidates(ProgramFolder())) : wanted;
  return std::filesystem::absolute(path).lexically_normal().string();
}

std::unique_ptr<Machine> MakeMachine(const HostOptions& options) {
  const std::string_view provider = options.provider;
  if (provider.starts_with(kScenarioPrefix)) {
    return std::make_unique<ScenarioMachine>(
        ReadScenario(std::string(provider.substr(kScenarioPrefix.size()))));
  }
  LinuxOptions linux = options.linux;
  if (!linux.stateFolder.empty()) {
    linux.stateFolder = std::filesystem::absolute(linux.stateFolder).string();
  }
  if (!linux.root.empty()) {
    linux.root = std::filesystem::canonical(linux.root).string();
  }
  return std::make_unique<ProviderMachine>(MakeLinuxProviders(linux));
}

RunningHost::RunningHost(const HostOptions& options, TrafficObserver* traffic) : traffic_(traffic) {
  const std::string module = AbsoluteModule(options.module);
  const std::string folder =
      FindConfiguration(options.configuration, ConfigurationCandidates(ProgramFolder()));
  machine_ = MakeMachine(options);
  std::filesystem::current_path(folder);
  words_ = StatusWords::FromFile("EM_STATUS.ini");
  configuration_ = ReadConfiguration(ReadIniFile("EM_STATUS.ini"));
  SetTraceLevel(options.traceLevel);

  // Ends what is over before the module can read it.
  simulationWatch_ = std::make_unique<SimulationWatch>(SimulationFolder(folder));
  simulation_ = std::make_unique<SimulationTracker>(SimulationFolder(folder));
  FollowSimulation();
  host_ = std::make_unique<Host>(
      *machine_, *notices_,
      Host::ScanObserver{[this] { simulation_->ScanBegins(); }, [this] { simulation_->ScanEnds(); }},
      traffic_);
  library_ = std::make_unique<ModuleLibrary>(module);
  // A provider that is stuck may outlive all of this; it keeps the queue.
  machine_->Start([notices = notices_] { notices->Push(Notice{}); });
  // Starting, the module reads the simulation file as well.
  simulation_->ScanBegins();
  session_ = std::make_unique<ModuleSession>(library_->Module(), *host_, *machine_);
  places_ = std::make_unique<ComponentPlaces>(*session_);
  static_cast<void>(machine_->WaitUntilRead(kFirstReading));
  if (traffic_ != nullptr) {
    traffic_->OnStart(*session_, *machine_);
  }
  session_->Run();
}

RunningHost::~RunningHost() {
  places_.reset();
  session_.reset();
  library_.reset();
}

std::vector<Notice> RunningHost::Wait(std::optional<std::chrono::milliseconds> limit) {
  std::array<pollfd, 3> descriptors{{{notices_->Descriptor(), POLLIN, 0},
                                     {signals_.Descriptor(), POLLIN, 0},
                                     {simulationWatch_->Descriptor(), POLLIN, 0}}};
  const int timeout = limit ? int(std::max<std::int64_t>(limit->count(), 0)) : -1;
  if (poll(descriptors.data(), descriptors.size(), timeout) <= 0) {
    return {};
  }
  stopped_ = stopped_ || descriptors[1].revents != 0;
  if (!stopped_ && descriptors[2].revents != 0) {
    FollowSimulation();
  }
  if (stopped_) {
    return {};
  }
  auto notices = notices_->Take();
  FollowScans(notices);
  return notices;
}

/// Not every change comes as an event, so each tree is looked at.
void RunningHost::FollowScans(const std::vector<Notice>& notices) {
  const auto lastEnd =
      std::ranges::find(notices.rbegin(), notices.rend(), Notice::Kind::ScanEnd, &Notice::kind);
  if (lastEnd == notices.rend()) {
    return;
  }
  if (const auto text = session_->TreeText()) {
    since_.Follow(ReadStatusTree(*text), std::chrono::floor<std::chrono::seconds>(lastEnd->time));
  }
}

void RunningHost::WakeUp() {
  if (traffic_ != nullptr) {
    traffic_->OnWakeUp();
  }
  session_->WakeUp();
}

void RunningHost::FollowSimulation() {
  if (simulationWatch_->Take() && session_) {
    WakeUp();
  }
  if (const auto failure = simulationWatch_->TakeFailure()) {
    std::cerr << "emhost: " << *failure << std::endl;
  }
}

Report RunningHost::MakeReport(std::uint32_t led) {
  const auto text = session_->TreeText();
  if (!text) {
    throw std::runtime_error("the module has no status tree after its scan; --trace 2 tells more.");
  }
  Report report;
  report.time = std::chrono::system_clock::now();
  report.root = ReadStatusTree(*text);
  report.simulation = simulation_->State();
  NameNodes(report.root, [this](const auto& subsystem, const auto& component, auto index, auto cabinet) {
    return places_->InstanceId(subsystem, component, index, cabinet);
  });
  MarkSimulated(report.root, report.simulation);
  DropAbsent(report.root);
  AttachObjects(report.root, *machine_, ModuleSession::kServerCabinet);
  ApplyRules(report.root, configuration_);
  AttachConstantObjects(report.root, configuration_, *machine_, ModuleSession::kServerCabinet);
  CountCoverage(report.root);
  TellMargins(report.root, configuration_);
  since_.Tell(report);
  report.systemStatus = session_->SystemStatus().value_or(0);
  report.led = led;
  return report;
}

std::optional<Report> RunningHost::FirstReport(std::chrono::seconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!stopped_) {
    const auto rest = end - std::chrono::steady_clock::now();
    for (const Notice& notice : Wait(std::chrono::ceil<std::chrono::milliseconds>(rest))) {
      if (notice.kind == Notice::Kind::ScanEnd) {
        return MakeReport(notice.led);
      }
    }
    if (rest <= rest.zero()) {
      throw std::runtime_error("no scan has ended within " + std::to_string(limit.count()) +
                               " seconds; --trace 2 tells what the module is doing.");
    }
  }
  return std::nullopt;
}

void RunningHost::Name(StatusChange& change, const StatusNode& root) {
  const SimulationState simulation = simulation_->State();
  change.simulated = simulation.InForce();
  if (change.what != StatusChange::What::Instance) {
    return;
  }
  change.simulated =
      change.simulated && simulation.parts.contains(places_->InstanceIdAt(change.subsystem, change.component,
                                                                          change.index, change.cabinet));
  change.subsystemName = session_->SubsystemName(change.subsystem);
  change.componentName = session_->ComponentName(change.subsystem, change.component);
  const StatusNode* node =
      FindInstance(root, change.subsystemName, change.componentName, change.index, change.cabinet);
  change.name = node != nullptr ? NodeName(*node)
                                : session_->InstanceName(change.subsystem, change.component, change.index,
                                                         change.cabinet);
  change.object = node != nullptr ? node->object : std::nullopt;
}

}  // namespace emstatus::host
