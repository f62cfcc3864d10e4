#include "host/commands/FrozenHost.h"

#include <poll.h>

#include <array>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <utility>

#include "host/commands/RunningHost.h"
#include "host/view/NodeNames.h"

namespace emstatus::host {
namespace {

constexpr int kSlicesToFreeze = 100;
constexpr std::chrono::milliseconds kSliceToFreeze{100};
/// Nothing that a scan waits for takes time here.
constexpr int kLongestScanMs = 60000;

bool HasCome(const StopSignals& signals) {
  pollfd descriptor{signals.Descriptor(), POLLIN, 0};
  return poll(&descriptor, 1, 0) > 0;
}

}  // namespace

std::unique_ptr<FrozenMachine> Freeze(const HostOptions& options, const StopSignals& signals) {
  const auto machine = MakeMachine(options);
  machine->Start([] {});
  bool read = false;
  for (int slice = 0; slice < kSlicesToFreeze && !read; ++slice) {
    if (HasCome(signals)) {
      return nullptr;
    }
    read = machine->WaitUntilRead(kSliceToFreeze);
  }
  if (!read) {
    std::cerr << "emhost: a source has not finished reading; objects of it may be missing." << std::endl;
  }
  auto frozen = std::make_unique<FrozenMachine>(*machine);
  machine->Stop();
  return frozen;
}

FrozenHost::FrozenHost(const HostOptions& options, const std::string& folder, const StopSignals& signals,
                       FrozenMachine& machine)
    : signals_(signals),
      machine_(machine),
      configuration_(ReadConfigurationFile(folder + "/EM_STATUS.ini"), std::nullopt) {
  const std::string module = AbsoluteModule(options.module);
  std::filesystem::current_path(configuration_.Folder());
  SetTraceLevel(options.traceLevel);
  host_ = std::make_unique<Host>(machine, *notices_, Host::ScanObserver{[this] { gate_.Pass(); }, [] {}});
  library_ = std::make_unique<ModuleLibrary>(module);
  machine.Start([] {});
  session_ = std::make_unique<ModuleSession>(library_->Module(), *host_, machine);
  places_ = std::make_unique<ComponentPlaces>(*session_);
  session_->Run();
}

FrozenHost::~FrozenHost() {
  gate_.Open();
  places_.reset();
  session_.reset();
  library_.reset();
}

std::vector<Notice> FrozenHost::WaitForNotices() {
  std::array<pollfd, 2> descriptors{
      {{notices_->Descriptor(), POLLIN, 0}, {signals_.Descriptor(), POLLIN, 0}}};
  const int ready = poll(descriptors.data(), descriptors.size(), kLongestScanMs);
  stopped_ = stopped_ || descriptors[1].revents != 0;
  if (ready == 0) {
    throw std::runtime_error("the module's scan does not end; --trace 2 tells what it is doing.");
  }
  return stopped_ ? std::vector<Notice>{} : notices_->Take();
}

std::optional<ScanResult> FrozenHost::Scan() {
  ScanResult result;
  gate_.LetOne();
  while (!stopped_) {
    for (const Notice& notice : WaitForNotices()) {
      if (auto change = history_.Take(notice)) {
        result.changes.push_back(std::move(*change));
      }
      if (notice.kind != Notice::Kind::ScanEnd) {
        continue;
      }
      auto tree = session_->TreeText();
      if (!tree) {
        throw std::runtime_error("the module has no status tree after its scan; --trace 2 tells more.");
      }
      result.tree = std::move(*tree);
      result.systemStatus = session_->SystemStatus().value_or(0);
      result.led = notice.led;
      return result;
    }
  }
  return std::nullopt;
}

StatusNode FrozenHost::NamedTree(const ScanResult& result) {
  StatusNode root = ReadStatusTree(result.tree);
  NameNodes(root, [this](const auto& subsystem, const auto& component, auto index, auto cabinet) {
    return places_->InstanceId(subsystem, component, index, cabinet);
  });
  AttachObjects(root, machine_, ModuleSession::kServerCabinet);
  return root;
}

std::optional<std::uint32_t> FrozenHost::ComponentStatus(const std::string& subsystem,
                                                         const std::string& component) {
  const auto place = places_->PlaceOf(subsystem, component);
  return place ? session_->ComponentStatus(place->first, place->second) : std::nullopt;
}

}  // namespace emstatus::host
