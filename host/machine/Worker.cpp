#include "host/machine/Worker.h"

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace emstatus::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kLongestThreadName = 15;
constexpr auto kLongestWait = std::chrono::hours(1);

struct PendingJob {
  Worker::Job run;
  // Guarded by State::lock
  bool abandoned = false;
  std::optional<Answer> answer;
};

int NewEventDescriptor() {
  const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  return descriptor;
}

}  // namespace

struct Worker::State {
  State() : wakeUp(NewEventDescriptor()) {}
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { close(wakeUp); }

  void Wake() const {
    // A full counter wakes as well.
    static_cast<void>(eventfd_write(wakeUp, 1));
  }

  std::shared_ptr<PendingJob> NextJob() {
    const std::lock_guard guard(lock);
    if (jobs.empty()) {
      return nullptr;
    }
    auto job = jobs.front();
    jobs.pop_front();
    busy = true;
    return job;
  }

  void RunJobs();
  void RunTask();
  void Wait();
  Clock::time_point NextRun() const;

  // Constant after construction
  const int wakeUp;
  RegularTask task;
  // Own lock
  std::stop_source stop;
  // Guarded by lock
  std::mutex lock;
  std::condition_variable changed;
  std::deque<std::shared_ptr<PendingJob>> jobs;
  /// At a job or at the task.
  bool busy = false;
  /// Somebody has waited in vain for what the worker is busy with.
  bool overdue = false;
  bool hurry = false;
  bool ended = false;
  std::thread thread;
  // The worker's own
  std::vector<pollfd> watched;
  Clock::time_point nextRun = Clock::now();
  Clock::time_point lastRun{};
};

void Worker::State::RunJobs() {
  while (const auto job = NextJob()) {
    if (stop.stop_requested()) {
      return;
    }
    Answer answer = Answer::Refusal(AnswerStatus::Failed);
    try {
      answer = job->run(stop.get_token());
    } catch (const std::exception&) {
      // The asker learns of it by the status; there is nobody else to tell.
    }
    const std::lock_guard guard(lock);
    busy = overdue = false;
    if (!job->abandoned) {
      job->answer = std::move(answer);
      changed.notify_all();
    }
  }
}

void Worker::State::RunTask() {
  const auto now = Clock::now();
  {
    const std::lock_guard guard(lock);
    if (!task.run || (now < nextRun && !hurry)) {
      return;
    }
    hurry = false;
    busy = true;
  }
  lastRun = now;
  nextRun = now + task.interval;
  task.run(stop.get_token());
  watched.clear();
  if (task.watch) {
    task.watch(watched);
  }
  const std::lock_guard guard(lock);
  busy = overdue = false;
}

void Worker::State::Wait() {
  std::vector<pollfd> descriptors = watched;
  descriptors.push_back({wakeUp, POLLIN, 0});
  const auto now = Clock::now();
  const auto rest = task.run
                        ? std::clamp<Clock::duration>(nextRun - now, Clock::duration::zero(), kLongestWait)
                        : Clock::duration(kLongestWait);
  const auto rounded = std::chrono::ceil<std::chrono::milliseconds>(rest);
  if (poll(descriptors.data(), descriptors.size(), int(rounded.count())) <= 0) {
    return;
  }
  eventfd_t count = 0;
  static_cast<void>(eventfd_read(wakeUp, &count));
  descriptors.pop_back();
  if (std::ranges::any_of(descriptors, [](const pollfd& one) { return one.revents != 0; })) {
    nextRun = std::min(nextRun, std::max(Clock::now(), lastRun + kSmallestGap));
    // They stay ready until the task has read them.
    watched.clear();
  }
}

void Worker::Run(const std::shared_ptr<State>& state) {
  while (!state->stop.stop_requested()) {
    state->RunJobs();
    state->RunTask();
    state->Wait();
  }
  const std::lock_guard guard(state->lock);
  state->ended = true;
  state->changed.notify_all();
}

Worker::Worker(const std::string& name) : Worker(name, RegularTask{}) {}

Worker::Worker(const std::string& name, RegularTask task) : state_(std::make_shared<State>()) {
  state_->task = std::move(task);
  state_->thread = std::thread(Run, state_);
  pthread_setname_np(state_->thread.native_handle(), name.substr(0, kLongestThreadName).c_str());
}

Worker::~Worker() {
  Stop();
}

std::optional<Answer> Worker::Call(Job job, std::chrono::milliseconds timeout) {
  const auto pending = std::make_shared<PendingJob>();
  pending->run = std::move(job);
  std::unique_lock guard(state_->lock);
  if (state_->overdue || state_->stop.stop_requested()) {
    return std::nullopt;
  }
  state_->jobs.push_back(pending);
  state_->Wake();
  const auto limit = std::min<Clock::duration>(timeout, kLongestWait);
  state_->changed.wait_until(guard, Clock::now() + limit,
                             [&] { return pending->answer.has_value() || state_->stop.stop_requested(); });
  if (!pending->answer) {
    pending->abandoned = true;
    // Whatever keeps the worker, this job or what came before it, keeps it from the next one too.
    state_->overdue = state_->busy;
    std::erase(state_->jobs, pending);
  }
  return std::move(pending->answer);
}

void Worker::Hurry() {
  const std::lock_guard guard(state_->lock);
  state_->hurry = true;
  state_->Wake();
}

void Worker::RequestStop() {
  const std::lock_guard guard(state_->lock);
  state_->stop.request_stop();
  state_->changed.notify_all();
  state_->Wake();
}

void Worker::Stop(std::chrono::milliseconds limit) {
  RequestStop();
  std::unique_lock guard(state_->lock);
  if (!state_->thread.joinable()) {
    return;
  }
  state_->changed.wait_for(guard, limit, [&] { return state_->ended; });
  const bool ended = state_->ended;
  std::thread thread = std::move(state_->thread);
  guard.unlock();
  if (ended) {
    thread.join();
  } else {
    // Stuck in the system. What it uses is its own; it ends with the process.
    thread.detach();
  }
}

}  // namespace emstatus::host
