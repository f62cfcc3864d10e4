// An extension module of few words: one component of temperatures, scanned once and whenever the host wakes
// it. Loaded by the tests as a shared library, like the real one.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include <emstatus/EntryPoints.h>
#include <emstatus/HostInterface.h>
#include <emstatus/ModuleInfo.h>

#include "host/module/CommandReader.h"
#include "host/module/OwnedCommand.h"

namespace emstatus::host {
namespace {

constexpr std::uint32_t kTemperature = 0x0101;
constexpr std::uint32_t kStatusOf[] = {1, 2, 3};

class FakeModule final : public CIExtensionModule {
 public:
  ~FakeModule() override { Stop(); }
  bool GetModuleInfo(ModuleInfo*) override { return false; }
  bool HostHook1() override { return true; }
  bool Start(HostInterface* host, std::uint32_t) override {
    host_ = host;
    return host_->SetModuleState(this, false);
  }
  bool Stop() override {
    if (thread_.joinable()) {
      host_->ModuleStopping(this);
      thread_.join();
    }
    return true;
  }
  void StartThreads() override {
    thread_ = std::thread([this] { Run(); });
  }
  void OnReply(HostCommand&) override { WakeUp(); }
  bool OnRequest(HostCommand& command) override {
    const std::lock_guard guard(lock_);
    switch (ReadNumber(command, "OC", 0)) {
      case 0x2339:
        return tree_.empty() ? WriteAnswer(command, Answer{19, {}}) : WriteAnswer(command, Answer::Of(tree_));
      case 0x230F:
        return WriteAnswer(command, Answer::Of(system_));
      case 0x2304:
        return WriteAnswer(command, Answer::Of("Temperatures"));
      case 0x2308:
        return WriteAnswer(command, Answer::Of("Sensors"));
      default:
        WriteAnswer(command, Answer{1, {}});
        return false;
    }
  }
  std::uint32_t HostHook2() override { return 0; }
  bool SetCabNr(std::uint32_t) override { return true; }
  std::uint32_t HostHook3() override { return 0; }
  bool SetServerSeList(const std::uint32_t*, std::uint32_t) override { return true; }
  std::uint32_t OnNotification(std::uint32_t code, std::uint32_t, void*) override {
    ending_ = ending_ || code == HWN_SWITCH_SHUTDOWN;
    WakeUp();
    return 0;
  }
  const char* GetModuleName() override { return "FAKE"; }
  void HostHook4() override {}
  void HostHook5() override {}
  void HostHook6() override {}
  void HostHook7() override {}
  std::uint32_t HostHook8() override { return 0; }
  std::uint32_t HostHook9() override { return 0; }
  std::uint32_t HostHook10() override { return 0; }
  std::uint32_t HostHook11() override { return 0; }
  std::uint32_t OnModuleNotification(std::uint32_t, std::uint32_t, void*) override { return 0; }

 private:
  void WakeUp() {
    const std::lock_guard guard(lock_);
    woken_ = true;
    wakeUp_.notify_all();
  }

  void Run() {
    while (!ending_) {
      Scan();
      std::unique_lock guard(lock_);
      wakeUp_.wait(guard, [&] { return woken_ || ending_; });
      woken_ = false;
    }
  }

  Answer Ask(std::uint32_t code, std::uint32_t extension, std::uint32_t object,
             std::optional<nlohmann::json> data = std::nullopt) {
    OwnedCommand command({code, extension, object, 0, std::move(data)});
    host_->SendRequest(this, command.Get(), 5000);
    return {ReadNumber(command.Get(), "ST", kNoStatus), ReadData(command.Get())};
  }

  void Event(std::uint32_t code, std::uint32_t object, std::uint32_t status) {
    OwnedCommand command({code, 0, object, 0, status});
    host_->SendEvent(this, command.Get());
  }

  void Scan() {
    Ask(0x1030, 0, 0);
    const auto count = NumberOf(Ask(kTemperature, 1, 0).data).value_or(0);
    std::uint32_t worst = 0;
    nlohmann::json children = nlohmann::json::array();
    for (std::uint32_t index = 0; index < count && !ending_; ++index) {
      const auto state = NumberOf(Ask(kTemperature, 2, index).data);
      const std::uint32_t status = state && *state < 3 ? kStatusOf[*state] : 0;
      worst = std::max(worst, status);
      Event(0x2322, index, status);
      children.push_back({{"Id", std::to_string(index)},
                          {"Desig", "Sensor" + std::to_string(index)},
                          {"Status", status},
                          {"Assoc", "TRIQ:0101-000" + std::to_string(index) + "-0002"}});
    }
    const nlohmann::json component{
        {"Id", "c"}, {"Desig", "Sensors"}, {"Status", worst}, {"Children", children}};
    const nlohmann::json subsystem{{"Id", "s"},
                                   {"Desig", "Temperatures"},
                                   {"Status", worst},
                                   {"Children", nlohmann::json::array({component})}};
    const nlohmann::json root{{"Id", "root"},
                              {"Desig", "Fake"},
                              {"Status", worst},
                              {"Children", nlohmann::json::array({subsystem})}};
    {
      const std::lock_guard guard(lock_);
      tree_ = root.dump();
      system_ = worst;
    }
    Event(0x230F, 0, worst);
    if (!ending_) {
      Ask(0x1033, 0, 0, worst);
    }
  }

  HostInterface* host_ = nullptr;
  std::thread thread_;
  std::atomic<bool> ending_{false};
  std::mutex lock_;
  std::condition_variable wakeUp_;
  // Guarded by lock_
  bool woken_ = false;
  std::string tree_;
  std::uint32_t system_ = 0;
};

FakeModule* theModule = nullptr;

}  // namespace
}  // namespace emstatus::host

#define EM_EXPORT __attribute__((visibility("default")))

EM_EXPORT bool EM_Create(emstatus::CIExtensionModule** out, std::uintptr_t) {
  emstatus::host::theModule = new emstatus::host::FakeModule;
  *out = emstatus::host::theModule;
  return true;
}

EM_EXPORT int EM_Delete() {
  delete emstatus::host::theModule;
  emstatus::host::theModule = nullptr;
  return 1;
}

EM_EXPORT const char* EM_GetModuleName() {
  return "FAKE";
}

EM_EXPORT int EM_SetupAction(std::uint32_t) {
  return 1;
}
