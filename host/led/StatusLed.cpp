#include "host/led/StatusLed.h"

#include <atomic>
#include <utility>

namespace emstatus::host {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kRestoreWait{500};

}  // namespace

struct StatusLed::State {
  State(std::string ledName, std::unique_ptr<SystemFiles> files, Teller tellerGiven)
      : name(std::move(ledName)), teller(std::move(tellerGiven)), device(std::move(files), name) {}

  void Tell(const std::string& text) const { teller("LED " + name + ": " + text + "."); }

  void ShowWanted() {
    busySince = SteadyClock::now().time_since_epoch();
    const std::string problem = device.Show(wanted);
    busySince = SteadyClock::duration::zero();
    // A problem is told again when it has become another one.
    if (problem != told && !problem.empty()) {
      Tell(problem);
      told = problem;
    } else if (problem.empty() && !told.empty() && wanted != toldFor) {
      told.clear();
    }
    toldFor = wanted;
  }

  // Constant after construction
  const std::string name;
  const Teller teller;
  // Atomic
  std::atomic<LedLook> wanted{LedLook::Off};
  /// When the worker began with the LED; zero while it does nothing.
  std::atomic<SteadyClock::duration> busySince{SteadyClock::duration::zero()};
  // The worker's own
  LedDevice device;
  std::string told;
  LedLook toldFor = LedLook::Off;
};

StatusLed::StatusLed(const std::string& name, std::unique_ptr<SystemFiles> files, Teller teller,
                     std::chrono::milliseconds lookAgain, std::chrono::milliseconds slow)
    : state_((CheckLed(*files, name), std::make_shared<State>(name, std::move(files), std::move(teller)))),
      slow_(slow),
      worker_("led", {lookAgain, [state = state_](std::stop_token) { state->ShowWanted(); }, {}}) {
  state_->Tell("off until the first scan has ended");
}

StatusLed::~StatusLed() {
  const auto restored = worker_.Call(
      [state = state_](std::stop_token) {
        const std::string problem = state->device.Restore();
        return problem.empty() ? Answer{} : Answer::Of(problem);
      },
      kRestoreWait);
  if (!restored) {
    state_->Tell("it hangs, and could not be set back to what it was");
  } else if (restored->data) {
    state_->Tell("could not be set back to what it was: " + restored->data->get<std::string>());
  }
}

void StatusLed::Show(std::uint32_t ledValue) {
  const LedLook look = LookOf(ledValue);
  if (state_->wanted.exchange(look) != look) {
    worker_.Hurry();
  }
  const auto since = state_->busySince.load();
  const bool slow = since != since.zero() && SteadyClock::now().time_since_epoch() - since > slow_;
  if (slow && !std::exchange(slowTold_, slow)) {
    state_->Tell("does not answer");
  }
  slowTold_ = slow;
}

}  // namespace emstatus::host
