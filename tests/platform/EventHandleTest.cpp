#include "platform/EventHandle.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <new>
#include <thread>

#include "tests/platform/ThreadFaults.h"
#include "tests/support/TraceCapture.h"
#include "tests/support/TraceLevel.h"

// There when the program is checked for leaks.
extern "C" __attribute__((weak)) void __lsan_disable();
extern "C" __attribute__((weak)) void __lsan_enable();

namespace emstatus::test {
namespace {

using Lines = std::vector<std::string>;

/// Returns once a thread waits on the event, which is what keeps its attributes from being set.
void UntilWaitedOn(EventHandle& event, bool signaled, bool manual) {
  while (event.SetAttributes(signaled, manual)) std::this_thread::yield();
}

/// The lines since the last call, with the address behind the first "event " written as "E".
Lines Told() {
  Lines lines = Trace().Take();
  for (std::string& line : lines) {
    const std::size_t at = line.find("event 0x");
    if (at != std::string::npos) line.replace(at + 6, line.find_first_of(" ,:>\n", at + 6) - at - 6, "E");
  }
  return lines;
}

/// A thread in Wait(). It is known to wait by the line that it writes with the event's mutex held.
class WaitingThread {
 public:
  explicit WaitingThread(EventHandle& event, std::uint32_t timeoutMs = 1'000'000)
      : thread_([this, &event, timeoutMs] { result_ = event.Wait(timeoutMs, true); }) {
    while (line_.empty()) {
      for (const std::string& line : Told()) {
        if (line.find("prepare time") == 0) line_ = line;
      }
    }
  }
  const std::string& Line() const { return line_; }
  EventWaitResult Result() {
    if (thread_.joinable()) thread_.join();
    return result_;
  }

 private:
  std::string line_;
  EventWaitResult result_ = EVENT_FAILURE;
  std::jthread thread_;
};

class Events : public testing::Test {
 protected:
  Events() { Trace().Take(); }
  ~Events() override { Trace().Take(); }
  /// The lines of `steps` with their levels.
  static Lines ToldBy(const std::function<void()>& steps) {
    return LinesWithLevels([&steps](int level) {
      const TraceLevel traceLevel(static_cast<std::uint32_t>(level));
      steps();
      return Told();
    });
  }
  const TraceLevel level_{5};
};

TEST_F(Events, TellsItsSteps) {
  const auto steps = [] {
    EventHandle event;
    event.Create(false, false, "name");
    EventHandle copy(event);
    event.Set();
    event.Check();
    event.Wait(kNoTimeout, true);
    event.SetAttributes(true, true);
    event.Wait(7, true);
    event.Wait(7, false);
    event.Reset();
    event.Pulse();
    copy.Close();
    EventHandle other;
    other.Create(false, false, "name");
    EventHandle unnamed;
    unnamed.Create(true, true);
  };
  const Lines expected = {
      "5 creating event E <name> (IsSignaled=0)\n",
      "5 incr refcount on event E <name> (IsSignaled=0,IsManual=0)\n",
      "5 Set event E <name> IsSignaled=0 --> IsSignaled=1\n",
      "5 Check event E <name> (IsSignaled=1)\n",
      "5 \nwaiting forever on event E",
      "5 event E <name> (IsManual=0) has been already signaled --> New state: IsSignaled=0\n",
      "5 Create event E <name>, changing attributes (IsSignaled=0,IsManual=0) --> (IsSignaled=1,IsManual=1)\n",
      "5 \nwaiting 7ms on event E",
      "5 event E <name> (IsManual=1) has been already signaled --> New state: IsSignaled=1\n",
      "5 Reset event E <name>: IsSignaled=1 --> IsSignaled=0\n",
      "5 Pulse event E <name> IsSignaled=0 --> IsSignaled=0\n",
      "5 Close event E <name> IsSignaled=0 --> IsSignaled=1\n",
      "3 refCount for event E <name> incremented (IsSignaled=1)\n",
      "1 WARNING: manual setting mismatch for event E <name>\n",
      "5 creating event E <anon> (IsSignaled=1)\n",
      "5 deleting event E <anon> (IsSignaled=1)\n",
      "5 decr refcount on event E <name> (IsSignaled=1)\n",
      "5 decr refcount on event E <name> (IsSignaled=1)\n",
      "5 deleting event E <name> (IsSignaled=1)\n",
  };
  EXPECT_EQ(ToldBy(steps), expected);
}

TEST_F(Events, StaysEmptyWhenItCannotBeBuilt) {
  const struct {
    const char* function;
    const char* name;
    const char* told;
  } rows[] = {
      {"pthread_condattr_setclock", "name",
       "3 pthread_condattr_setclock(): ## ERROR ##: Set CLOCK_MONOTONIC failed (ret=11) for event E <name> (IsSignaled=1)\n"},
      {"pthread_cond_init", nullptr,
       "3 pthread_cond_init(), CLOCK_MONOTONIC: ## ERROR ##: failed (ret=11) on event E <anon> (IsSignaled=1)\n"},
      {"pthread_mutex_init", "name",
       "3 pthread_mutex_init(), CLOCK_MONOTONIC: ## ERROR ##: failed (ret=11) on event E <name> (IsSignaled=1)\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.function);
    EventHandle event;
    const auto fail = [&] {
      const ThreadFault fault(row.function, 11);
      EXPECT_FALSE(event.Create(true, false, row.name));
    };
    EXPECT_EQ(ToldBy(fail), Lines{row.told});
    const TraceLevel level(5);
    EXPECT_FALSE(event.Set() || event.Reset() || event.Pulse() || event.Check() || event.Close());
    EXPECT_FALSE(event.SetAttributes(true, false));
    EXPECT_EQ(event.Wait(kNoTimeout, true), EVENT_FAILURE);
    EXPECT_TRUE(event.IsValid());
    EXPECT_EQ(Told(), Lines{});
    EXPECT_TRUE(event.Create(true, true, row.name)) << "the name must be free again";
    EXPECT_EQ(Told().size(), 1U);
  }
}

TEST_F(Events, ManualResetReleasesEveryWaiterUntilReset) {
  EventHandle event;
  event.Create(false, true);
  WaitingThread first(event);
  WaitingThread second(event);
  EXPECT_TRUE(event.Set());
  EXPECT_EQ(first.Result(), EVENT_SIGNAL);
  EXPECT_EQ(second.Result(), EVENT_SIGNAL);
  EXPECT_EQ(event.Wait(0, false), EVENT_SIGNAL);
  EXPECT_TRUE(event.Reset());
  EXPECT_EQ(event.Wait(0, false), EVENT_TIMEOUT);
}

TEST_F(Events, AutomaticResetReleasesOneWaiter) {
  EventHandle event;
  event.Create(true, false);
  EXPECT_EQ(event.Wait(kNoTimeout, false), EVENT_SIGNAL);
  EXPECT_EQ(event.Wait(0, false), EVENT_TIMEOUT);
  WaitingThread waiter(event);
  EXPECT_TRUE(event.Set());
  EXPECT_EQ(waiter.Result(), EVENT_SIGNAL);
  EXPECT_FALSE(event.Check());
}

TEST_F(Events, PulseReleasesOnlyWhoWaits) {
  EventHandle event;
  event.Create(true, true);
  EXPECT_TRUE(event.Pulse());
  EXPECT_EQ(event.Wait(0, false), EVENT_TIMEOUT);
  WaitingThread first(event);
  WaitingThread second(event);
  EXPECT_TRUE(event.Pulse());
  EXPECT_EQ(first.Result(), EVENT_SIGNAL);
  EXPECT_EQ(second.Result(), EVENT_SIGNAL);
  EXPECT_FALSE(event.Check());
}

TEST_F(Events, AttributesStayWhileAThreadWaits) {
  EventHandle event;
  event.Create(false, true);
  WaitingThread waiter(event);
  EXPECT_FALSE(event.SetAttributes(true, false));
  EXPECT_FALSE(event.Check());
  event.Set();
  EXPECT_EQ(waiter.Result(), EVENT_SIGNAL);
  EXPECT_TRUE(event.Check()) << "still a manual-reset event";
}

TEST_F(Events, CloseReleasesWaitersAndEndsOneHandle) {
  EventHandle event;
  event.Create(false, false);
  EventHandle other(event);
  WaitingThread waiter(event);
  EXPECT_TRUE(event.Close());
  EXPECT_EQ(waiter.Result(), EVENT_SIGNAL);
  EXPECT_FALSE(event.IsValid());
  EXPECT_FALSE(event.Set() || event.Reset() || event.Pulse() || event.Check() || event.Close());
  EXPECT_EQ(event.Wait(kNoTimeout, true), EVENT_FAILURE);
  EXPECT_TRUE(other.IsValid() && other.Set() && other.Check());
  EXPECT_TRUE(EventHandle(event).Check()) << "a copy is open again";
}

TEST_F(Events, NamesAreShared) {
  EventHandle keeper[40];
  for (int i = 0; i < 40; ++i) keeper[i].Create(false, true, std::to_string(i * 7 % 40).c_str());
  for (int i = 0; i < 40; ++i) {
    EventHandle user;
    ASSERT_TRUE(user.Create(true, false, std::to_string(i * 7 % 40).c_str()));
    EXPECT_FALSE(user.Check()) << "keeps the state it has";
    keeper[i].Set();
    EXPECT_EQ(user.Wait(0, false), EVENT_SIGNAL) << i;
    EXPECT_TRUE(user.Check()) << "keeps the kind of reset it has";
  }
  keeper[3].Create(false, false, "other");
  EventHandle again;
  again.Create(false, true, "21");
  EXPECT_FALSE(again.Check()) << "the last handle had given the event up";
}

TEST_F(Events, CopyLeavesTheEventItReplaces) {
  EventHandle source;
  source.Create(false, false);
  if (__lsan_disable != nullptr) __lsan_disable();
  EventHandle target;
  target.Create(true, true, "left");
  if (__lsan_enable != nullptr) __lsan_enable();
  target = *&target;
  EXPECT_TRUE(target.Check());
  target = source;
  source.Set();
  EXPECT_EQ(target.Wait(0, false), EVENT_SIGNAL);
  EventHandle left;
  left.Create(false, false, "left");
  EXPECT_TRUE(left.Check()) << "the replaced event must still be there";
}

TEST_F(Events, TimesOutInMonotonicTime) {
  EventHandle event;
  event.Create(false, true);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(event.Wait(1100, false), EVENT_TIMEOUT);
  const auto passed = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(passed, std::chrono::milliseconds(1100));
  EXPECT_LT(passed, std::chrono::seconds(30));
}

TEST_F(Events, ComputesItsDeadline) {
  for (const std::uint32_t timeout : {1U, 999U, 1000U, 0xFFFFFFFEU}) {
    EventHandle event;
    event.Create(false, false);
    WaitingThread waiter(event, timeout);
    long beginSeconds = 0, begin = 0, seconds = 0, nanoseconds = -1;
    ASSERT_EQ(
        std::sscanf(
            waiter.Line().c_str(),
            "prepare time for waiting on event E <anon> (ts_beg:sec=%ld,ts_beg:nsec=%ld) -> (ts:sec=%ld,ts:nsec=%ld)\n",
            &beginSeconds, &begin, &seconds, &nanoseconds),
        4);
    event.Set();
    EXPECT_GE(nanoseconds, 0);
    EXPECT_LT(nanoseconds, 1'000'000'000);
    EXPECT_EQ((seconds - beginSeconds) * 1'000'000'000 + nanoseconds - begin, timeout * 1'000'000L);
  }
}

TEST_F(Events, ACancelledWaiterLeavesTheEventUsable) {
  for (const std::uint32_t timeout : {kNoTimeout, 1'000'000U}) {
    EventHandle event;
    event.Create(false, true);
    struct Arguments {
      EventHandle& event;
      std::uint32_t timeout;
    } arguments{event, timeout};
    pthread_t thread{};
    const auto body = [](void* given) -> void* {
      auto& [waitedOn, milliseconds] = *static_cast<Arguments*>(given);
      waitedOn.Wait(milliseconds, true);
      return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, nullptr, body, &arguments), 0);
    UntilWaitedOn(event, false, true);
    ASSERT_EQ(pthread_cancel(thread), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_TRUE(event.SetAttributes(false, false)) << "no longer counted as a waiter";
    EXPECT_TRUE(event.Set()) << "the mutex must be free";
  }
}

TEST_F(Events, TheLastHandleOutlastsItsWaiters) {
  alignas(EventHandle) std::byte memory[sizeof(EventHandle)];
  auto* const event = new (memory) EventHandle;
  event->Create(false, false, "waited on");
  WaitingThread waiter(*event, 800);
  const auto begin = std::chrono::steady_clock::now();
  event->~EventHandle();
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(900))
      << "looks once a second";
  EXPECT_EQ(waiter.Result(), EVENT_TIMEOUT);
  const Lines lines = Told();
  EXPECT_TRUE(Holds(lines, "deleting event E <waited on> (IsSignaled=0)\n"));
  EXPECT_TRUE(Holds(lines, "TIMEOUT(0,110) on event E <waited on> (IsSignaled=0)\n"));
}

TEST_F(Events, NamedEventsComeAndGoOnManyThreads) {
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int round = 0; round < 300; ++round) {
        EventHandle event;
        event.Create(false, true, std::to_string(round % 3).c_str());
        const EventHandle copy(event);
        event.Set();
        if (!copy.Check()) ADD_FAILURE() << "set, and never reset by anybody";
      }
    });
  }
  threads.clear();
  EXPECT_EQ(std::ranges::count_if(Told(), [](const std::string& line) { return line.find("WARNING") == 0; }),
            0);
}

}  // namespace
}  // namespace emstatus::test
