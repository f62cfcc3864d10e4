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
  DeviceReads<std::string> reads(machine.Factory(), kImpatient);
  const auto takes = TakesOf({"a", "b", "c", "d"});
  const Clock::time_point begin{std::chrono::seconds(100)};
  // Reads until the device has told `text`: an impatient reader may have to come back for it.
  const auto readUntil = [&](const char* device, const char* text, int second) {
    auto answers = reads.Read(takes, begin + std::chrono::seconds(second));
    for (int tries = 0; tries < 500 && answers.at(device).sample != text; ++tries) {
      answers = reads.Read(takes, begin + std::chrono::seconds(second));
    }
    EXPECT_EQ(answers.at(device).sample, text) << device;
    return answers;
  };

  readUntil("b", "2", 0);
  EXPECT_FALSE(readUntil("d", "4", 0).at("a").sample);
  machine.Write({{"/sys/b", "20"}});
  EXPECT_EQ(readUntil("b", "20", 5).at("a").waitingSince, begin);
  EXPECT_EQ(machine.TakeReads("/sys/a"), 1) << "a device that owes an answer is not asked again";

  machine.Release();
  EXPECT_EQ(readUntil("a", "1", 10).at("a").waitingSince, std::nullopt);
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

TEST(ReadLanes, ManyThatHangAreNotWaitedForOneAfterTheOther) {
  constexpr int kHanging = 31;
  MachineFolder machine("/sys/a", "1");
  machine.Hang("/sys/a");
  ReadLanes lanes(machine.Factory(), milliseconds(100));
  std::vector<std::pair<std::string, ReadLanes::Job>> jobs;
  for (int number = 0; number < kHanging; ++number) {
    jobs.emplace_back(std::to_string(number), [](SystemFiles& files) { files.ReadAttribute("/sys/a"); });
  }
  auto read = std::make_shared<std::atomic<bool>>(false);
  jobs.emplace_back("last", [read](SystemFiles&) { *read = true; });
  const auto begin = Clock::now();
  lanes.Run(std::move(jobs));
  EXPECT_LT(Clock::now() - begin, kHanging * milliseconds(100));
  EXPECT_TRUE(*read);
  machine.Release();
}

TEST(ReadLanes, AJobThatThrowsEndsNothing) {
  MachineFolder machine;
  ReadLanes lanes(machine.Factory(), kPatient);
  std::atomic<int> ran = 0;
  lanes.Run({{"a", [](SystemFiles&) { throw std::runtime_error("no memory"); }},
             {"b", [&ran](SystemFiles&) { ++ran; }}});
  EXPECT_EQ(ran, 1);
}

}  // namespace
}  // namespace emstatus::test
