#include "host/machine/ProviderMachine.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <semaphore>

namespace emstatus::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = ObjectTable::Clock;

constexpr milliseconds kPatience{60000};

Reading Fan(const std::string& id, Condition condition = Condition::Good) {
  Reading reading;
  reading.objectClass = ObjectClass::Fan;
  reading.id = id;
  reading.name = "Fan " + id;
  reading.quality = Quality::Good;
  reading.condition = condition;
  reading.measurement = Measurement{4200, Unit::RevolutionsPerMinute, {}};
  return reading;
}

class ObjectTableTest : public testing::Test {
 protected:
  static constexpr milliseconds kLateAfter{3000};

  bool Update(std::vector<Reading> readings, int second) {
    return table_.Update(0, std::move(readings), At(second), At(second));
  }
  static Clock::time_point At(int second) { return Clock::time_point(seconds(1000 + second)); }
  ObjectView View(std::uint32_t index, int second) {
    const auto view = table_.Find({ObjectClass::Fan, index, 0}, At(second));
    EXPECT_TRUE(view) << index;
    return view.value_or(ObjectView{});
  }
  RawState State(std::uint32_t index, int second) { return RawStateOf(View(index, second).reading); }
  ObjectView Source(int second) { return *table_.Find({ObjectClass::HealthSource, 0, 0}, At(second)); }

  ObjectTable table_;
  const std::size_t provider_ = table_.AddProvider("sensors", kLateAfter);
};

TEST_F(ObjectTableTest, ObjectsKeepTheirNumbers) {
  EXPECT_TRUE(Update({Fan("a"), Fan("b"), Fan("c")}, 0));
  EXPECT_FALSE(Update({Fan("c"), Fan("b"), Fan("a")}, 1)) << "nothing has changed";
  EXPECT_EQ(View(0, 1).reading.id, "a");
  EXPECT_TRUE(Update({Fan("c"), Fan("d"), Fan("a", Condition::Warning)}, 2));
  EXPECT_EQ(State(0, 2), RawState::Warning);
  EXPECT_EQ(State(1, 2), RawState::Lost);
  EXPECT_FALSE(View(1, 2).reading.measurement);
  EXPECT_EQ(State(1, 60), RawState::Lost) << "what is gone does not become late";
  EXPECT_EQ(View(3, 2).reading.id, "d");
  EXPECT_EQ(table_.Count(ObjectClass::Fan, 0), 4U);
  EXPECT_EQ(table_.Count(ObjectClass::Fan, 1), 0U);
  EXPECT_TRUE(Update({Fan("a"), Fan("b"), Fan("c"), Fan("d")}, 3));
  EXPECT_EQ(State(1, 3), RawState::Good) << "it came back in its place";
}

TEST_F(ObjectTableTest, WhatIsGoneCanBeDismissedUntilItComesBack) {
  Update({Fan("a"), Fan("b")}, 0);
  EXPECT_EQ(table_.DismissGone(ObjectClass::Fan, 0), 0U);
  Update({Fan("b")}, 1);
  EXPECT_EQ(table_.DismissGone(ObjectClass::Fan, 0), 1U);
  EXPECT_EQ(table_.DismissGone(ObjectClass::Fan, 0), 0U);
  EXPECT_FALSE(Update({Fan("b")}, 2));
  EXPECT_EQ(State(0, 2), RawState::Inactive);
  EXPECT_EQ(State(1, 2), RawState::Good);
  Update({Fan("a"), Fan("b")}, 3);
  Update({Fan("b")}, 4);
  EXPECT_EQ(State(0, 4), RawState::Lost) << "nobody has dismissed it this time";
}

TEST_F(ObjectTableTest, WhatMayGoBecomesInactive) {
  Reading pluggable = Fan("usb");
  pluggable.mayGo = true;
  Update({pluggable}, 0);
  EXPECT_TRUE(Update({}, 1));
  EXPECT_EQ(State(0, 1), RawState::Inactive);
  EXPECT_FALSE(Update({}, 2)) << "told once";
}

TEST_F(ObjectTableTest, ReadingsGrowLate) {
  Reading seldom = Fan("b");
  seldom.takenAt = At(-20);
  seldom.lateAfter = seconds(30);
  Update({Fan("a"), seldom}, 0);
  EXPECT_EQ(State(0, 3), RawState::Good);
  EXPECT_EQ(State(0, 4), RawState::Late);
  EXPECT_EQ(View(0, 4).reading.reason, "not read for 4 s, last 4200 RPM");
  EXPECT_FALSE(View(0, 4).reading.measurement) << "the last value is not repeated as new";
  EXPECT_EQ(State(1, 10), RawState::Good);
  EXPECT_EQ(View(1, 10).age, seconds(30));
  EXPECT_EQ(State(1, 11), RawState::Late);
}

TEST_F(ObjectTableTest, TwoObjectsUnderOneIdAreTwoObjects) {
  Update({Fan("a"), Fan("a", Condition::Critical)}, 0);
  EXPECT_FALSE(Update({Fan("a"), Fan("a", Condition::Critical)}, 1));
  EXPECT_EQ(State(0, 1), RawState::Good);
  EXPECT_EQ(State(1, 1), RawState::Failed);
  EXPECT_EQ(table_.Count(ObjectClass::Fan, 0), 2U);
}

TEST_F(ObjectTableTest, ProviderIsAnObjectItself) {
  EXPECT_EQ(table_.Count(ObjectClass::HealthSource, 0), 1U);
  EXPECT_EQ(RawStateOf(Source(0).reading), RawState::Late) << "not read yet is not good";
  EXPECT_FALSE(table_.WaitUntilRead(milliseconds(0)));
  Update({Fan("a")}, 0);
  EXPECT_TRUE(table_.WaitUntilRead(milliseconds(0)));
  EXPECT_EQ(RawStateOf(Source(1).reading), RawState::Good);
  EXPECT_EQ(RawStateOf(Source(4).reading), RawState::Late);
  EXPECT_TRUE(table_.Fail(provider_, "the bus is gone", At(5)));
  EXPECT_EQ(RawStateOf(Source(5).reading), RawState::SensorFault);
  EXPECT_EQ(Source(5).reading.reason, "the bus is gone");
  EXPECT_EQ(State(0, 5), RawState::Late) << "a failed read does not refresh anything";
}

TEST_F(ObjectTableTest, FindsByNameAndId) {
  Update({Fan("a"), Fan("b")}, 0);
  for (const char* name : {"b", "Fan b"}) {
    const auto view = table_.FindByName(ObjectClass::Fan, 0, name, At(0));
    ASSERT_TRUE(view) << name;
    EXPECT_EQ(view->address.index, 1U);
  }
  EXPECT_FALSE(table_.FindByName(ObjectClass::Fan, 0, "c", At(0)));
}

/// A provider that reads what the test says, when the test says so.
class Script {
 public:
  using Step = std::function<std::vector<Reading>()>;

  void Add(Step step) {
    const std::lock_guard guard(lock_);
    steps_.push_back(std::move(step));
    changed_.notify_all();
  }
  std::vector<Reading> Next(const std::stop_token& stop) {
    reading.release();
    std::unique_lock guard(lock_);
    if (!changed_.wait(guard, stop, [&] { return !steps_.empty(); })) {
      return {};
    }
    const Step step = std::move(steps_.front());
    steps_.pop_front();
    guard.unlock();
    return step();
  }

  std::atomic<int> confirmed{0};
  /// Released when a read begins.
  std::counting_semaphore<> reading{0};

 private:
  std::mutex lock_;
  std::condition_variable_any changed_;
  std::deque<Step> steps_;
};

class ScriptedProvider final : public Provider {
 public:
  ScriptedProvider(std::string name, std::shared_ptr<Script> script)
      : name_(std::move(name)), script_(std::move(script)) {}
  std::string_view Name() const override { return name_; }
  milliseconds Interval() const override { return std::chrono::hours(1); }
  milliseconds LateAfter() const override { return kPatience; }
  std::vector<Reading> Read(const ReadContext& context) override { return script_->Next(context.stop); }
  bool Confirm(ObjectClass, const std::string& id) override {
    ++script_->confirmed;
    return id == "latched";
  }

 private:
  const std::string name_;
  const std::shared_ptr<Script> script_;
};

class ProviderMachineTest : public testing::Test {
 protected:
  ProviderMachineTest() {
    std::vector<std::unique_ptr<Provider>> providers;
    providers.push_back(std::make_unique<ScriptedProvider>("good", good_));
    providers.push_back(std::make_unique<ScriptedProvider>("stuck", stuck_));
    machine_ = std::make_unique<ProviderMachine>(std::move(providers));
    machine_->Start([this] { changes_.release(); });
  }
  Answer Ask(std::uint32_t code, Question question, std::uint32_t object = 0,
             milliseconds timeout = kPatience) {
    return machine_->Ask({code, std::uint32_t(question), object, 0, std::nullopt}, timeout);
  }

  const std::shared_ptr<Script> good_ = std::make_shared<Script>();
  const std::shared_ptr<Script> stuck_ = std::make_shared<Script>();
  std::counting_semaphore<> changes_{0};
  std::unique_ptr<ProviderMachine> machine_;
};

TEST_F(ProviderMachineTest, AProviderThatIsStuckDelaysNoOther) {
  good_->Add([] { return std::vector{Fan("a", Condition::Warning)}; });
  changes_.acquire();
  EXPECT_FALSE(machine_->WaitUntilRead(milliseconds(0)));
  EXPECT_EQ(Ask(0x0102, Question::Count), Answer::Of(1));
  EXPECT_EQ(Ask(0x0102, Question::State), Answer::Of(1));
  EXPECT_EQ(Ask(0x0803, Question::State, 0), Answer::Of(0));
  EXPECT_EQ(Ask(0x0803, Question::State, 1), Answer::Of(10));
  EXPECT_EQ(Ask(0x0803, Question::Name, 1), Answer::Of("stuck"));
  stuck_->Add([]() -> std::vector<Reading> { throw std::runtime_error("no bus"); });
  EXPECT_TRUE(machine_->WaitUntilRead(kPatience));
  EXPECT_EQ(Ask(0x0803, Question::Reason, 1), Answer::Of("no bus"));
}

TEST_F(ProviderMachineTest, ConfirmGoesToTheProviderAndIsBounded) {
  good_->Add([] { return std::vector{Fan("latched"), Fan("other")}; });
  changes_.acquire();
  good_->reading.acquire();
  EXPECT_EQ(Ask(0x0101, Question::Confirm).status, 2U);
  EXPECT_EQ(Ask(0x0102, Question::Confirm), Answer::Of(1));
  EXPECT_EQ(good_->confirmed, 2);
  good_->reading.acquire();
  EXPECT_EQ(Ask(0x0102, Question::Confirm, 0, milliseconds(10)).status, 6U) << "its worker waits in a read";
  EXPECT_EQ(good_->confirmed, 2);
}

TEST_F(ProviderMachineTest, StopEndsReadsThatWait) {
  machine_->Stop();
  EXPECT_EQ(Ask(0x0102, Question::Count), Answer::Of(0));
}

}  // namespace
}  // namespace emstatus::host
