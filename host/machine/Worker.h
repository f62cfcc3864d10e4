#pragma once

#include <poll.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "host/machine/Request.h"

namespace emstatus::host {

/// A thread that does one thing at a time for one device or source: the jobs that are handed to it and, when
/// it has one, its regular task. Whoever waits for it waits no longer than he said, and a worker that is
/// stuck delays nobody else.
///
/// Jobs and tasks may outlive the Worker when they are stuck in the system: they own (shared_ptr) all they
/// use.
class Worker {
 public:
  using Job = std::function<Answer(std::stop_token)>;

  struct RegularTask {
    std::chrono::milliseconds interval{0};
    std::function<void(std::stop_token)> run;
    /// Adds descriptors that make the task run early; called after each run. May be empty.
    std::function<void(std::vector<pollfd>&)> watch;
  };

  /// A task does not run again sooner than this, whatever its descriptors say.
  static constexpr std::chrono::milliseconds kSmallestGap{100};
  /// How long the destructor waits for a thread before it lets it go.
  static constexpr std::chrono::milliseconds kEndWait{500};

  /// The thread begins at once, with the task when there is one. `name` shows in ps, cut to 15 bytes.
  explicit Worker(const std::string& name);
  Worker(const std::string& name, RegularTask task);
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  /// As Stop().
  ~Worker();

  /// Runs `job` on the worker and waits for its answer. Nothing when that takes longer than `timeout`: the
  /// job is dropped, or its late answer is. Nothing at once while an earlier job is overdue, and after
  /// Stop(). A job that throws answers "failed". [any thread but the worker's]
  std::optional<Answer> Call(Job job, std::chrono::milliseconds timeout);

  /// Runs the regular task as soon as the worker is free. [any thread]
  void Hurry();

  /// Asks the thread to end; waiting calls fail at once. [any thread]
  void RequestStop();

  /// As RequestStop(), then waits for the thread up to `limit` and lets it go when it is stuck. [owner's
  /// thread]
  void Stop(std::chrono::milliseconds limit = kEndWait);

 private:
  struct State;
  static void Run(const std::shared_ptr<State>& state);

  std::shared_ptr<State> state_;
};

}  // namespace emstatus::host
