#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/machine/NumberedMachine.h"
#include "host/machine/ScenarioFile.h"
#include "host/machine/Worker.h"

namespace emstatus::host {

/// A machine that plays a scenario: readings as the story has them at this scan or moment, with answers that
/// fail, come late or are of the wrong type where it says so.
class ScenarioMachine final : public NumberedMachine {
 public:
  using Clock = std::chrono::steady_clock;

  /// `now` is the clock of a story that counts seconds.
  explicit ScenarioMachine(Scenario scenario, std::function<Clock::time_point()> now = Clock::now);
  ~ScenarioMachine() override;

  std::vector<std::uint32_t> ExtensionCabinets() const override { return scenario_.extensionCabinets; }
  void Start(std::function<void()> changed) override;
  bool WaitUntilRead(std::chrono::milliseconds) override { return true; }
  Answer Ask(const Request& request, std::chrono::milliseconds timeout) override;
  void Refresh() override {}
  void OnScanBegin() override;
  void Stop() override;

 protected:
  std::uint32_t Count(ObjectClass objectClass, std::uint32_t cabinet) const override;
  std::optional<ObjectView> FindByIndex(const ObjectAddress& address) const override;
  std::optional<ObjectView> FindByName(ObjectClass objectClass, std::uint32_t cabinet,
                                       const std::string& name) const override;
  Answer Confirm(ObjectClass objectClass, std::uint32_t cabinet, std::chrono::milliseconds timeout) override;

 private:
  struct Player {
    const ScenarioObject* object = nullptr;
    ObjectAddress address;
    // Guarded by latchLock_: the step that was latched and not yet confirmed.
    mutable const ScenarioStep* latched = nullptr;
  };
  /// A special answer, and the worker that gives it; no worker: nothing delays it.
  struct Delivery {
    const ScenarioAnswer* answer = nullptr;
    Worker* lane = nullptr;
  };

  std::uint64_t Moment() const;
  const ScenarioStep& StoryStep(const Player& player) const;
  /// The step that shows: the latched one, else the story's.
  const ScenarioStep& ShownStep(const Player& player) const;
  ObjectView View(const Player& player) const;
  void CountGroup(Reading& reading) const;
  const Player* PlayerOf(const ObjectAddress& address) const;
  Delivery DeliveryOf(const ClassRow& row, Question question, const Request& request);
  Worker* Lane(const Player& player, const ScenarioAnswer* answer);
  void AdvanceLatches() const;

  // Constant after construction
  const Scenario scenario_;
  const std::function<Clock::time_point()> now_;
  const Clock::time_point start_;
  std::vector<Player> players_;
  // Own lock
  /// The scan that is going on, or the last one: what is shown between scans is what it saw.
  std::atomic<std::uint64_t> scan_{0};
  std::unique_ptr<Worker> rescanner_;
  mutable std::mutex latchLock_;
  std::mutex laneLock_;
  // Guarded by laneLock_
  std::map<std::string, std::unique_ptr<Worker>> lanes_;
  bool stopped_ = false;
};

}  // namespace emstatus::host
