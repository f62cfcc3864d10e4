#include "host/simulation/SimulationWatch.h"

#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace emstatus::host {
namespace {

/// How often a file is tried to be removed that could not be, and how often is looked without inotify.
constexpr std::chrono::seconds kRetry{60};
constexpr std::chrono::seconds kLook{2};

WallTime Now() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

int Checked(int descriptor, const char* what) {
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), what);
  }
  return descriptor;
}

void Add(int events, int descriptor) {
  epoll_event event{};
  event.events = EPOLLIN;
  Checked(epoll_ctl(events, EPOLL_CTL_ADD, descriptor, &event), "epoll_ctl");
}

int WatchFolder(const std::string& folder) {
  const int changes = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  constexpr std::uint32_t kMask = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ATTRIB;
  if (changes >= 0 && inotify_add_watch(changes, folder.c_str(), kMask) < 0) {
    close(changes);
    return -1;
  }
  return changes;
}

void ReadAway(int descriptor) {
  std::array<char, 4096> bytes;
  while (read(descriptor, bytes.data(), bytes.size()) > 0) {
  }
}

}  // namespace

SimulationWatch::SimulationWatch(SimulationFolder folder)
    : folder_(std::move(folder)),
      events_(Checked(epoll_create1(EPOLL_CLOEXEC), "epoll_create1")),
      timer_(Checked(timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK), "timerfd_create")),
      changes_(WatchFolder(folder_.Folder())) {
  Add(events_, timer_);
  if (changes_ >= 0) {
    Add(events_, changes_);
  }
  static_cast<void>(Take());
}

SimulationWatch::~SimulationWatch() {
  for (const int descriptor : {changes_, timer_, events_}) {
    if (descriptor >= 0) {
      close(descriptor);
    }
  }
}

bool SimulationWatch::Take() {
  Drain();
  const auto before = stamp_;
  Read();
  EndIfOver();
  SetTimer();
  return stamp_ != before;
}

void SimulationWatch::Drain() const {
  ReadAway(timer_);
  if (changes_ >= 0) {
    ReadAway(changes_);
  }
}

void SimulationWatch::Read() {
  const auto stamp = folder_.Look();
  if (stamp == stamp_) {
    return;
  }
  stamp_ = stamp;
  failed_ = false;
  until_.reset();
  try {
    text_ = folder_.Read().value_or("");
    until_ = ReadSimulation(text_).until;
  } catch (const std::system_error&) {
    // The module cannot read it either; it is looked at again when it changes.
  }
}

void SimulationWatch::EndIfOver() {
  if (!until_ || *until_ > Now()) {
    return;
  }
  try {
    static_cast<void>(folder_.RemoveIf(text_));
    Read();
  } catch (const std::system_error& error) {
    if (!std::exchange(failed_, true)) {
      failure_ = std::string("the simulation is over but does not end, since its file stays: ") +
                 error.what() + "\nEnd it as a user who may: emhost simulate --clear";
    }
  }
}

void SimulationWatch::SetTimer() const {
  std::optional<WallTime> next = until_;
  if (failed_) {
    next = Now() + kRetry;
  }
  if (changes_ < 0) {
    next = std::min(next.value_or(WallTime::max()), Now() + kLook);
  }
  itimerspec when{};
  when.it_value.tv_sec = next ? next->time_since_epoch().count() : 0;
  // Wakes also when the clock is set, so that the end is told by the clock on the wall.
  constexpr int kFlags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
  static_cast<void>(timerfd_settime(timer_, kFlags, &when, nullptr));
}

std::optional<std::string> SimulationWatch::TakeFailure() {
  return std::exchange(failure_, std::nullopt);
}

}  // namespace emstatus::host
