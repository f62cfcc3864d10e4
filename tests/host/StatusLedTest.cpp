#include "host/led/StatusLed.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <set>

namespace emstatus::host {
namespace {

using std::chrono::milliseconds;

/// A LED with the manners of the kernel's: writing 0 to the brightness takes the trigger away, and while the
/// timer blinks the brightness is what it happens to be.
struct KernelLed {
  std::mutex lock;
  std::condition_variable changed;
  // Guarded by lock
  std::string trigger = "none";
  std::vector<std::string> triggers{"none", "heartbeat", "timer"};
  std::string brightness = "7";
  std::string delayOn = "1";
  std::string delayOff = "1";
  /// What is written to the brightness ends there.
  unsigned highestTaken = 255;
  int error = 0;
  bool hangs = false;
  std::vector<std::string> told;

  /// How it looks from outside.
  std::string Look() const {
    return trigger + (trigger == "timer"  ? " " + delayOn + "/" + delayOff
                      : trigger == "none" ? " " + brightness
                                          : "");
  }
  bool WaitFor(const std::string& look) {
    std::unique_lock guard(lock);
    return changed.wait_for(guard, std::chrono::seconds(60), [&] { return Look() == look; });
  }
  bool WaitToBeTold(const std::string& text) {
    std::unique_lock guard(lock);
    return changed.wait_for(guard, std::chrono::seconds(60),
                            [&] { return !told.empty() && told.back() == text; });
  }
  template <typename Change>
  void Set(Change change) {
    const std::lock_guard guard(lock);
    change(*this);
    changed.notify_all();
  }
  void Tell(const std::string& text) {
    Set([&](KernelLed&) { told.push_back(text); });
  }
};

class KernelLedFiles final : public SystemFiles {
 public:
  explicit KernelLedFiles(std::shared_ptr<KernelLed> led) : led_(std::move(led)) {}

  FileResult<std::string> ReadAttribute(const std::string& path) override {
    const std::lock_guard guard(led_->lock);
    const std::string name = Attribute(path);
    if (name == "max_brightness") {
      return {"255", led_->error};
    }
    if (name == "brightness") {
      return {led_->trigger == "none" ? led_->brightness : "99", led_->error};
    }
    const bool timer = led_->trigger == "timer" && (name == "delay_on" || name == "delay_off");
    return timer ? FileResult<std::string>{name == "delay_on" ? led_->delayOn : led_->delayOff, led_->error}
                 : FileResult<std::string>{"", ENOENT};
  }
  FileResult<std::string> ReadText(const std::string& path, std::size_t) override {
    const std::lock_guard guard(led_->lock);
    std::string text;
    for (const std::string& one : led_->triggers) {
      text += one == led_->trigger ? "[" + one + "] " : one + " ";
    }
    return Attribute(path) != "trigger" || text.empty() ? FileResult<std::string>{"", ENOENT}
                                                        : FileResult<std::string>{text + "\n", led_->error};
  }
  FileResult<std::vector<std::string>> List(const std::string& path) override {
    return path == "/sys/class/leds"
               ? FileResult<std::vector<std::string>>{{"input3::capslock", "status:red"}, 0}
               : FileResult<std::vector<std::string>>{{}, ENOENT};
  }
  FileResult<bool> WriteAttribute(const std::string& path, const std::string& text) override {
    std::unique_lock guard(led_->lock);
    led_->changed.wait(guard, [&] { return !led_->hangs; });
    if (led_->error != 0) {
      return {false, led_->error};
    }
    const std::string name = Attribute(path);
    if (name == "trigger") {
      led_->trigger = text;
    } else if (name == "brightness") {
      led_->brightness = std::to_string(std::min(unsigned(std::stoul(text)), led_->highestTaken));
      led_->trigger = text == "0" ? "none" : led_->trigger;
    } else if (led_->trigger != "timer") {
      return {false, ENOENT};
    } else {
      (name == "delay_on" ? led_->delayOn : led_->delayOff) = text;
    }
    led_->changed.notify_all();
    return {true, 0};
  }
  FileResult<std::vector<FolderEntry>> ListEntries(const std::string&) override { return {{}, ENOSYS}; }
  FileResult<std::string> ReadLink(const std::string&) override { return {"", ENOSYS}; }
  FileResult<std::string> RealPath(const std::string&) override { return {"", ENOSYS}; }
  FileResult<FilesystemRoom> Room(const std::string&) override { return {{}, ENOSYS}; }
  FileResult<int> OpenForPoll(const std::string&) override { return {-1, ENOSYS}; }

 private:
  static std::string Attribute(const std::string& path) {
    const std::string folder = "/sys/class/leds/status:red/";
    return path.starts_with(folder) ? path.substr(folder.size()) : "?";
  }

  const std::shared_ptr<KernelLed> led_;
};

class StatusLedTest : public testing::Test {
 protected:
  std::unique_ptr<StatusLed> Make(const std::string& name = "status:red",
                                  milliseconds lookAgain = milliseconds(20)) const {
    return std::make_unique<StatusLed>(
        name, std::make_unique<KernelLedFiles>(led_),
        [led = led_](const std::string& text) { led->Tell(text); }, lookAgain, milliseconds(20));
  }

  const std::shared_ptr<KernelLed> led_ = std::make_shared<KernelLed>();
};

TEST_F(StatusLedTest, LooksAsTheStatusAndIsGivenBack) {
  const struct {
    const char* formerTrigger;
    std::vector<std::string> triggers;
    const char* warning;
    const char* atTheEnd;
  } rows[] = {
      {"none", {"none", "heartbeat", "timer"}, "timer 500/500", "none 7"},
      {"heartbeat", {"none", "heartbeat", "timer"}, "timer 500/500", "heartbeat"},
      {"timer", {"none", "heartbeat", "timer"}, "timer 500/500", "timer 1/1"},
      {"heartbeat", {"none", "heartbeat"}, "none 127", "heartbeat"},
      {"none", {}, "none 127", "none 7"},
  };
  for (const auto& row : rows) {
    led_->Set([&](KernelLed& led) {
      led.trigger = row.formerTrigger;
      led.triggers = row.triggers;
      led.brightness = "7";
      led.delayOn = led.delayOff = "1";
      led.told.clear();
    });
    auto led = Make();
    EXPECT_TRUE(led_->WaitFor("none 0")) << "starting: " << led_->Look();
    // Bit 0x80 says only who can mend it.
    for (const auto& [value, look] :
         std::initializer_list<std::pair<std::uint32_t, const char*>>{{2, row.warning},
                                                                      {3, "none 255"},
                                                                      {0x82, row.warning},
                                                                      {1, "none 0"},
                                                                      {0x83, "none 255"},
                                                                      {0, "none 0"}}) {
      led->Show(value);
      EXPECT_TRUE(led_->WaitFor(look)) << value << ": " << led_->Look();
    }
    led.reset();
    EXPECT_EQ(led_->Look(), row.atTheEnd);
    EXPECT_EQ(led_->told, std::vector<std::string>{"LED status:red: off until the first scan has ended."});
  }
}

TEST_F(StatusLedTest, WhatIsWrongIsToldOnceForEachReason) {
  auto led = Make();
  led->Show(3);
  ASSERT_TRUE(led_->WaitFor("none 255"));
  led_->Set([](KernelLed& one) { one.trigger = "heartbeat"; });
  EXPECT_TRUE(led_->WaitFor("none 255")) << "it is not set again: " << led_->Look();
  EXPECT_TRUE(led_->WaitToBeTold(
      "LED status:red: another program had set it to trigger heartbeat; it is set again."));
  led_->Set([](KernelLed& one) { one.highestTaken = 1, one.brightness = "0"; });
  const std::string mismatch = "LED status:red: brightness 255 was written, brightness 1 was read back.";
  EXPECT_TRUE(led_->WaitToBeTold(mismatch));
  led_->Set([](KernelLed& one) { one.error = EACCES; });
  EXPECT_TRUE(led_->WaitToBeTold("LED status:red: cannot read brightness: Permission denied."));
  std::this_thread::sleep_for(milliseconds(100));
  std::vector<std::string> told;
  led_->Set([&](KernelLed& one) { told = one.told; });
  // Reading or writing may have been the first to be refused.
  EXPECT_EQ(std::set<std::string>(told.begin(), told.end()).size(), told.size()) << "each is told once";
  led.reset();
  EXPECT_EQ(
      led_->told.back(),
      "LED status:red: could not be set back to what it was: cannot write none to trigger: Permission denied.");
}

TEST_F(StatusLedTest, OneThatHangsDelaysNothing) {
  led_->Set([](KernelLed& one) { one.hangs = true; });
  const auto begin = std::chrono::steady_clock::now();
  auto led = Make();
  for (int scan = 0; scan < 20 && led_->told.size() < 2; ++scan) {
    led->Show(3);
    std::this_thread::sleep_for(milliseconds(10));
  }
  EXPECT_TRUE(led_->WaitToBeTold("LED status:red: does not answer."));
  led.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  EXPECT_EQ(led_->told.size(), 3U);
  EXPECT_EQ(led_->told.back(), "LED status:red: it hangs, and could not be set back to what it was.");
  led_->Set([](KernelLed& one) { one.hangs = false; });
}

TEST_F(StatusLedTest, OnlyWhatIsListedIsALed) {
  for (const char* name : {"", "..", "../leds/status:red", "status:red/", "status:green"}) {
    try {
      Make(name);
      ADD_FAILURE() << name;
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find("Those that there are: input3::capslock, status:red."),
                std::string::npos)
          << error.what();
    }
  }
}

}  // namespace
}  // namespace emstatus::host
