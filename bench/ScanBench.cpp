#include <poll.h>

#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/Benchmarks.h"
#include "host/configuration/UnpausedConfiguration.h"
#include "host/machine/FrozenMachine.h"
#include "host/machine/ScanGate.h"
#include "host/machine/ScenarioMachine.h"
#include "host/module/Host.h"
#include "host/module/ModuleLibrary.h"
#include "host/module/ModuleSession.h"
#include "host/module/NoticeQueue.h"

namespace emstatus::bench {
namespace {

using namespace host;

constexpr std::chrono::milliseconds kNoWait{0};
/// Names are asked in the first scans only, which are not what is measured.
constexpr int kScansBefore = 12;

/// Notes what is asked.
class ListeningMachine final : public Machine {
 public:
  explicit ListeningMachine(Machine& machine) : machine_(machine) {}

  std::vector<std::uint32_t> ExtensionCabinets() const override { return machine_.ExtensionCabinets(); }
  void Start(std::function<void()> changed) override { machine_.Start(std::move(changed)); }
  bool WaitUntilRead(std::chrono::milliseconds limit) override { return machine_.WaitUntilRead(limit); }
  Answer Ask(const Request& request, std::chrono::milliseconds timeout) override {
    if (listens_) {
      asked_.push_back(request);
    }
    return machine_.Ask(request, timeout);
  }
  std::optional<ObjectView> Find(const ObjectAddress& address) const override {
    return machine_.Find(address);
  }
  void Refresh() override { machine_.Refresh(); }
  void OnScanBegin() override { machine_.OnScanBegin(); }
  void Stop() override { machine_.Stop(); }

  /// While the module does not scan.
  void Listen(bool listens) { listens_ = listens; }
  const std::vector<Request>& Asked() const { return asked_; }

 private:
  Machine& machine_;
  bool listens_ = false;
  std::vector<Request> asked_;
};

/// The module with the shipped configuration, over the server of examples/, one scan at a time.
class Scanner {
 public:
  Scanner() {
    std::filesystem::current_path(configuration_.Folder());
    session_ = std::make_unique<ModuleSession>(library_.Module(), host_, listening_);
    session_->Run();
    for (int scan = 0; scan < kScansBefore; ++scan) {
      Scan();
    }
    listening_.Listen(true);
    Scan();
    listening_.Listen(false);
  }
  Scanner(const Scanner&) = delete;
  Scanner& operator=(const Scanner&) = delete;
  ~Scanner() {
    gate_.Open();
    session_.reset();
  }

  void Scan() {
    gate_.LetOne();
    for (;;) {
      pollfd descriptor{notices_.Descriptor(), POLLIN, 0};
      poll(&descriptor, 1, -1);
      for (const Notice& notice : notices_.Take()) {
        if (notice.kind == Notice::Kind::ScanEnd) {
          return;
        }
      }
    }
  }
  void AnswerTheSame() {
    for (const Request& request : listening_.Asked()) {
      benchmark::DoNotOptimize(listening_.Ask(request, kNoWait));
    }
  }
  std::int64_t Requests() const { return std::int64_t(listening_.Asked().size()); }

 private:
  FrozenMachine machine_{ScenarioMachine(ReadScenario(EM_SOURCE_DIR "/examples/server.json"))};
  ListeningMachine listening_{machine_};
  UnpausedConfiguration configuration_{ReadConfigurationFile(EM_SOURCE_DIR "/etc/EM_STATUS.ini"),
                                       std::nullopt};
  NoticeQueue notices_;
  ScanGate gate_;
  Host host_{listening_, notices_, Host::ScanObserver{[this] { gate_.Pass(); }, [] {}}};
  ModuleLibrary library_{BENCH_MODULE};
  std::unique_ptr<ModuleSession> session_;
};

void Answered(benchmark::State& state) {
  Scanner scanner;
  for (auto _ : state) {
    scanner.AnswerTheSame();
  }
  state.SetItemsProcessed(state.iterations() * scanner.Requests());
}

void Scanned(benchmark::State& state) {
  Scanner scanner;
  for (auto _ : state) {
    scanner.Scan();
  }
  state.SetItemsProcessed(state.iterations() * scanner.Requests());
}

}  // namespace

void RegisterScan() {
  benchmark::RegisterBenchmark("scan, a request/the machine's answer alone", Answered)
      ->MeasureProcessCPUTime();
  benchmark::RegisterBenchmark("scan, a request/a whole scan", Scanned)->MeasureProcessCPUTime();
}

}  // namespace emstatus::bench
