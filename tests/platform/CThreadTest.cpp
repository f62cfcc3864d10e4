#include "platform/CThread.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <thread>

#include "platform/EventHandle.h"
#include "tests/platform/ThreadFaults.h"
#include "tests/support/TraceCapture.h"
#include "tests/support/TraceLevel.h"

namespace emstatus::test {
namespace {

using Lines = std::vector<std::string>;

/// The lines since the last call, with the id of the thread written as "T".
Lines Told(pthread_t thread) {
  char id[16];
  std::snprintf(id, sizeof id, "%08X", static_cast<unsigned int>(thread));
  Lines lines = Trace().Take();
  for (std::string& line : lines) {
    const std::size_t at = thread != 0 ? line.find(id) : std::string::npos;
    if (at != std::string::npos) line.replace(at, 8, "T");
  }
  return lines;
}

void* Nothing(void* argument) {
  return argument;
}
void* WaitFor(void* event) {
  static_cast<EventHandle*>(event)->Wait(kNoTimeout, false);
  return nullptr;
}
void UntilWaitedOn(EventHandle& event) {
  while (event.SetAttributes(false, true)) std::this_thread::yield();
}

class Threads : public testing::Test {
 protected:
  Threads() {
    event_.Create(false, true);
    Trace().Take();
  }
  /// The lines of `steps` with their levels.
  static Lines ToldBy(const std::function<Lines()>& steps) {
    return LinesWithLevels([&steps](int level) {
      const TraceLevel traceLevel(static_cast<std::uint32_t>(level));
      Trace().Take();
      return steps();
    });
  }
  const TraceLevel level_{5};
  EventHandle event_;
  CThread thread_;
};

TEST_F(Threads, AWaitableThreadIsJoinedWithoutTimeout) {
  const auto steps = [this] {
    EXPECT_TRUE(thread_.Start(&Nothing, reinterpret_cast<void*>(0x2A), 63, true, 0x1000, true));
    const pthread_t id = thread_.Id();
    EXPECT_TRUE(thread_.WaitForTermination(30000));
    EXPECT_EQ(thread_.Id(), 0U);
    EXPECT_TRUE(thread_.WaitForTermination(0xFFFFFFFF));
    EXPECT_FALSE(thread_.Kill());
    return Told(id);
  };
  const Lines expected = {
      "5 \nCThread::Start: Start a thread, Prio=63, Suspend=1, StackSize=0x00001000, Waitable=1, KillAliveThread=0",
      "4 \npthread_attr_init: 0",
      "2 \nThreadPrio=63",
      "2 \nCThread::Start: thread=0xT created, Prio=63, Waitable=1, StackSize=0x1000",
      "1 \nCThread::WaitForTermination: WARNING: can't wait for Thread = 0xT termination with timeout",
      "1 \nCThread::WaitForTermination: a joinable Thread = 0xT has terminated, pstat=0x2a",
      "1 \nCThread::WaitForTermination: Thread = 0x000000000 doesn't exist !",
      "1 \nCThread::Kill: Try to kill the Thread = 0x00000000",
      "1 \nCThread::Kill: Thread = 0x000000000 doesn't exist !",
  };
  EXPECT_EQ(ToldBy(steps), expected);
}

TEST_F(Threads, ADetachedThreadIsCancelledNotJoined) {
  const auto steps = [this] {
    EXPECT_TRUE(thread_.Start(&WaitFor, &event_, 0, false, 0, false));
    UntilWaitedOn(event_);
    const pthread_t id = thread_.Id();
    pthread_attr_t attributes;
    EXPECT_EQ(pthread_getattr_np(id, &attributes), 0);
    int state = -1;
    pthread_attr_getdetachstate(&attributes, &state);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(state, PTHREAD_CREATE_DETACHED);
    Trace().Take();
    EXPECT_FALSE(thread_.WaitForTermination(0xFFFFFFFF));
    EXPECT_TRUE(thread_.Kill());
    EXPECT_EQ(thread_.Id(), 0U);
    const Lines told = Told(id);
    while (!event_.SetAttributes(false, true)) std::this_thread::yield();
    return told;
  };
  const Lines expected = {
      "1 \nCThread::WaitForTermination: WARNING: Can't wait for detached thread 0xT",
      "1 \nCThread::Kill: Try to kill the Thread = 0xT",
      "1 \nCThread::Kill: Try to kill a non-joinable Thread = 0x0T",
      "2 \nCThread::Kill: Killing a non-joinable thread 0xT",
      "2 \nCThread::Kill: a non-joinable thread 0xT cancel invoked",
  };
  EXPECT_EQ(ToldBy(steps), expected);
}

TEST_F(Threads, ADetachedThreadThatHasEndedIsNotCancelled) {
  // The destructor of a key's value is run when the routine has been left.
  static EventHandle* ended;
  ended = &event_;
  pthread_key_t key{};
  ASSERT_EQ(pthread_key_create(&key, [](void*) { ended->Set(); }), 0);
  const auto body = [](void* given) -> void* {
    pthread_setspecific(*static_cast<pthread_key_t*>(given), given);
    return nullptr;
  };
  ASSERT_TRUE(thread_.Start(body, &key, 0, false, 0, false));
  const pthread_t id = thread_.Id();
  ASSERT_EQ(event_.Wait(kNoTimeout, false), EVENT_SIGNAL);
  Trace().Take();
  EXPECT_TRUE(thread_.Kill());
  EXPECT_EQ(thread_.Id(), 0U);
  const Lines expected = {"\nCThread::Kill: Try to kill the Thread = 0xT",
                          "\nCThread::Kill: Try to kill a non-joinable Thread = 0x0T"};
  EXPECT_EQ(Told(id), expected);
  pthread_key_delete(key);
}

TEST_F(Threads, KillJoinsAWaitableThread) {
  const auto steps = [this] {
    EXPECT_TRUE(thread_.Start(&WaitFor, &event_, 0, false, 0, true));
    const pthread_t id = thread_.Id();
    Trace().Take();
    {
      const ThreadFault fault("pthread_join", 3);
      EXPECT_FALSE(thread_.WaitForTermination(0xFFFFFFFF));
      EXPECT_FALSE(thread_.Kill());
    }
    EXPECT_EQ(thread_.Id(), id) << "kept after a failed join";
    UntilWaitedOn(event_);
    event_.Set();
    EXPECT_TRUE(thread_.Kill());
    EXPECT_TRUE(event_.Reset());
    Lines told = Told(id);
    std::erase_if(told, [](const std::string& line) { return line.find("CThread") == std::string::npos; });
    return told;
  };
  const Lines expected = {
      "1 \nCThread::WaitForTermination: ERROR ! ThreadJoin failed, Thread = 0xT, Err = 0x00000003",
      "1 \nCThread::Kill: Try to kill the Thread = 0xT",
      "1 \nCThread::Kill: Try to join a joinable Thread = 0xT",
      "1 \nCThread::Kill: ERROR ! ThreadJoin failed, Thread = 0xT, Err = 0x00000003",
      "1 \nCThread::Kill: Try to kill the Thread = 0xT",
      "1 \nCThread::Kill: Try to join a joinable Thread = 0xT",
      "1 \nCThread::Kill: a joinable Thread = 0xT has terminated, pstat=(nil)",
  };
  EXPECT_EQ(ToldBy(steps), expected);
}

TEST_F(Threads, StartReportsTheStepThatFailed) {
  const struct {
    const char* function;
    int prio;
    int error;
    const char* told;
  } rows[] = {
      {"pthread_attr_init", 0, 12, "2 \npthread_attr_init failed: 12"},
      {"pthread_attr_setdetachstate", 0, 12, "2 \npthread_attr_setdetachstate failed: 12"},
      {"pthread_attr_setschedpolicy", 63, 12, "2 \npthread_attr_setschedpolicy failed: 12"},
      {"pthread_attr_getschedparam", 63, 12, "2 \npthread_attr_getschedparam failed: 12"},
      {"", 100, 22, "2 \npthread_attr_setschedparam failed: error=22 priority=100"},
      {"pthread_create", 63, 12, "2 \npthread_create failed: 12"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.told);
    const auto steps = [&] {
      const ThreadFault fault(row.function, 12);
      errno = 0;
      EXPECT_FALSE(thread_.Start(&Nothing, nullptr, row.prio, false, 0, false));
      EXPECT_EQ(errno, row.error);
      EXPECT_EQ(thread_.Id(), 0U);
      return Told(0);
    };
    EXPECT_EQ(ToldBy(steps).back(), row.told);
  }
  const ThreadFault fault("pthread_attr_setschedpolicy", 12);
  EXPECT_TRUE(thread_.Start(&Nothing, nullptr, 0, false, 0, true)) << "priority 0 sets no policy";
  EXPECT_TRUE(thread_.Kill());
}

TEST_F(Threads, ACancelThatFailsClearsTheThread) {
  const auto steps = [this] {
    EXPECT_TRUE(thread_.Start(&WaitFor, &event_, 0, false, 0, false));
    UntilWaitedOn(event_);
    const pthread_t id = thread_.Id();
    {
      const ThreadFault fault("pthread_cancel", 3);
      EXPECT_FALSE(thread_.Kill());
    }
    EXPECT_EQ(thread_.Id(), 0U);
    const Lines told = Told(id);
    event_.Set();
    while (!event_.SetAttributes(false, true)) std::this_thread::yield();
    return told;
  };
  EXPECT_EQ(ToldBy(steps).back(),
            "2 \nCThread::Kill: unable to cancel a non-joinable thread 0xT (err = 0x00000003)");
}

TEST_F(Threads, ASecondStartForgetsOrKillsTheFirst) {
  ASSERT_TRUE(thread_.Start(&WaitFor, &event_, 0, false, 0, false));
  UntilWaitedOn(event_);
  const pthread_t first = thread_.Id();
  EventHandle second;
  second.Create(false, true);
  ASSERT_TRUE(thread_.Start(&WaitFor, &second, 0, false, 0, false));
  EXPECT_NE(thread_.Id(), first);
  EXPECT_FALSE(event_.SetAttributes(false, true)) << "the first thread must go on";
  UntilWaitedOn(second);
  thread_.SetKillAliveThread(true);
  ASSERT_TRUE(thread_.Start(&Nothing, nullptr, 0, false, 0, true));
  while (!second.SetAttributes(false, true)) std::this_thread::yield();
  EXPECT_FALSE(event_.SetAttributes(false, true)) << "the forgotten thread must go on";
  EXPECT_TRUE(thread_.Kill());
  event_.Set();
  while (!event_.SetAttributes(true, true)) std::this_thread::yield();
}

}  // namespace
}  // namespace emstatus::test
