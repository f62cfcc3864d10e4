#include "host/machine/Worker.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <future>
#include <semaphore>

namespace emstatus::host {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kWorkerPatience{60000};

/// Stuck in the system: does not heed the stop token. Let it go before the test ends.
struct Stuck {
  std::counting_semaphore<> go{0};
  std::counting_semaphore<> reached{0};

  Worker::Job Job(std::shared_ptr<Stuck> self) {
    return [self = std::move(self)](const std::stop_token&) {
      self->reached.release();
      self->go.acquire();
      return Answer::Of("late");
    };
  }
};

Worker::Job Says(const char* word) {
  return [word](const std::stop_token&) { return Answer::Of(word); };
}

TEST(Worker, LateAnswerIsDroppedAndNobodyWaitsBehindIt) {
  Worker worker("test");
  const auto stuck = std::make_shared<Stuck>();
  do {
    EXPECT_EQ(worker.Call(stuck->Job(stuck), milliseconds(10)), std::nullopt);
  } while (!stuck->reached.try_acquire());
  EXPECT_EQ(worker.Call(Says("next"), kWorkerPatience), std::nullopt)
      << "fails at once while the worker is overdue";
  stuck->go.release();
  std::optional<Answer> answer;
  while (!(answer = worker.Call(Says("again"), kWorkerPatience))) {
    std::this_thread::yield();
  }
  EXPECT_EQ(answer, Answer::Of("again")) << "the late answer went to somebody else";
}

TEST(Worker, CallThatDidNotWaitLeavesAnIdleWorkerFree) {
  Worker worker("test");
  for (int turn = 0; turn < 200; ++turn) {
    static_cast<void>(worker.Call(Says("x"), milliseconds(0)));
  }
  // At most one of them is still at work.
  std::optional<Answer> answer;
  const auto limit = std::chrono::steady_clock::now() + kWorkerPatience;
  while (!answer && std::chrono::steady_clock::now() < limit) {
    answer = worker.Call(Says("y"), kWorkerPatience);
    std::this_thread::yield();
  }
  EXPECT_EQ(answer, Answer::Of("y"));
}

TEST(Worker, JobThatTimedOutInTheQueueNeverRuns) {
  Worker worker("test");
  const auto stuck = std::make_shared<Stuck>();
  auto first =
      std::async(std::launch::async, [&] { return worker.Call(stuck->Job(stuck), kWorkerPatience); });
  stuck->reached.acquire();
  const auto ran = std::make_shared<std::atomic<bool>>(false);
  const auto mark = [ran](const std::stop_token&) {
    *ran = true;
    return Answer{};
  };
  EXPECT_EQ(worker.Call(mark, milliseconds(10)), std::nullopt);
  stuck->go.release();
  EXPECT_EQ(first.get(), Answer::Of("late"));
  EXPECT_EQ(worker.Call(Says("x"), kWorkerPatience), Answer::Of("x"));
  EXPECT_FALSE(*ran);
}

TEST(Worker, JobThatThrowsFails) {
  Worker worker("test");
  const auto fails = [](const std::stop_token&) -> Answer { throw std::runtime_error("x"); };
  EXPECT_EQ(worker.Call(fails, kWorkerPatience), Answer::Refusal(AnswerStatus::Failed));
}

TEST(Worker, StopReleasesCallersAndLetsAStuckThreadGo) {
  Worker worker("test");
  const auto stuck = std::make_shared<Stuck>();
  auto call = std::async(std::launch::async, [&] { return worker.Call(stuck->Job(stuck), kWorkerPatience); });
  stuck->reached.acquire();
  worker.Stop(milliseconds(10));
  EXPECT_EQ(call.get(), std::nullopt);
  EXPECT_EQ(worker.Call(Says("x"), kWorkerPatience), std::nullopt);
  stuck->go.release();
}

TEST(Worker, TaskRunsByIntervalByHurryAndByDescriptor) {
  const auto runs = std::make_shared<std::counting_semaphore<>>(0);
  const int descriptor = eventfd(0, EFD_CLOEXEC);
  Worker::RegularTask task;
  task.interval = std::chrono::hours(1);
  task.run = [runs, descriptor](const std::stop_token&) {
    eventfd_t count = 0;
    pollfd ready{descriptor, POLLIN, 0};
    if (poll(&ready, 1, 0) == 1) {
      eventfd_read(descriptor, &count);
    }
    runs->release();
  };
  task.watch = [descriptor](std::vector<pollfd>& list) { list.push_back({descriptor, POLLIN, 0}); };
  {
    Worker worker("test", std::move(task));
    runs->acquire();
    worker.Hurry();
    runs->acquire();
    eventfd_write(descriptor, 1);
    runs->acquire();
    EXPECT_EQ(worker.Call(Says("x"), kWorkerPatience), Answer::Of("x"));
  }
  EXPECT_FALSE(runs->try_acquire());
  close(descriptor);
}

}  // namespace
}  // namespace emstatus::host
