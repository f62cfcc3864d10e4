#include "host/providers/ReadLanes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "host/providers/DeviceReads.h"
#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

std::map<std::string, DeviceReads<std::string>::Take> TakesOf(const std::vector<std::string>& names) {
  std::map<std::string, DeviceReads<std::string>::Take> takes;
  for (const std::string& name : names) {
    takes[name] = [name](SystemFiles& files) { return files.ReadAttribute("/sys/" + name).value; };
  }
  return takes;
}

TEST(DeviceReads, HungDevicesHoldUpNoOthersAndDeliverLater) {
  MachineFolder machine({{"/sys/a", "1"}, {"/sys/b", "2"}, {"/sys/c", "3"}, {"/sys/d", "4"}});
  machine.Hang("/sys/a");
  machine.Hang("/sys/c");
  DeviceReads<std::string> reads(machine.Factory(), milliseconds(30));
  const auto takes = TakesOf({"a", "b", "c", "d"});
  const Clock::time_point begin{std::chrono::seconds(100)};

  auto answers = reads.Read(takes, begin);
  EXPECT_FALSE(answers.at("a").sample);
  EXPECT_EQ(answers.at("b").sample, "2");
  EXPECT_EQ(answers.at("d").sample, "4");
  machine.Write({{"/sys/b", "20"}});
  answers = reads.Read(takes, begin + std::chrono::seconds(5));
  EXPECT_EQ(answers.at("b").sample, "20");
  EXPECT_EQ(answers.at("a").waitingSince, begin);
  EXPECT_EQ(machine.TakeReads("/sys/a"), 1) << "a device that owes an answer is not asked again";

  machine.Release();
  answers = reads.Read(takes, begin + std::chrono::seconds(10));
  EXPECT_EQ(answers.at("a").sample, "1");
  EXPECT_FALSE(answers.at("a").waitingSince);
  EXPECT_EQ(answers.at("b").takenAt, begin + std::chrono::seconds(10));
}

TEST(ReadLanes, EndsWhileADeviceHangs) {
  MachineFolder machine("/sys/a", "1");
  machine.Hang("/sys/a");
  auto read = std::make_shared<std::promise<void>>();
  {
    ReadLanes lanes(machine.Factory(), milliseconds(1));
    lanes.Run({{"a", [read](SystemFiles& files) {
                  files.ReadAttribute("/sys/a");
                  read->set_value();
                }}});
    machine.WaitUntilHanging("/sys/a");
    EXPECT_TRUE(lanes.IsRunning("a"));
  }
  machine.Release();
  read->get_future().wait();
}

TEST(ReadLanes, AJobThatThrowsEndsNothing) {
  MachineFolder machine;
  ReadLanes lanes(machine.Factory());
  std::atomic<int> ran = 0;
  lanes.Run({{"a", [](SystemFiles&) { throw std::runtime_error("no memory"); }},
             {"b", [&ran](SystemFiles&) { ++ran; }}});
  EXPECT_EQ(ran, 1);
}

}  // namespace
}  // namespace emstatus::test
