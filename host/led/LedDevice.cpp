#include "host/led/LedDevice.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <sstream>
#include <stdexcept>

#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

constexpr const char* kLedFolder = "/sys/class/leds";
constexpr const char* kNoTrigger = "none";
constexpr const char* kTimerTrigger = "timer";
constexpr const char* kBlinkMilliseconds = "500";

constexpr std::uint32_t kWarningLed = 2;
constexpr std::uint32_t kErrorLed = 3;
/// The rest of the value says who can mend what is wrong.
constexpr std::uint32_t kLedStatusBits = 0x7F;

std::runtime_error LedFault(const std::string& what, const char* attribute, int error) {
  return std::runtime_error("cannot " + what + " " + attribute + ": " + ErrorText(error));
}

}  // namespace

LedLook LookOf(std::uint32_t ledValue) {
  switch (ledValue & kLedStatusBits) {
    case kWarningLed:
      return LedLook::Blinking;
    case kErrorLed:
      return LedLook::On;
    default:
      return LedLook::Off;
  }
}

bool LedDevice::Setting::operator==(const Setting& other) const {
  return trigger == other.trigger && delayOn == other.delayOn && delayOff == other.delayOff &&
         (trigger != kNoTrigger || brightness == other.brightness);
}

LedDevice::LedDevice(std::unique_ptr<SystemFiles> files, const std::string& name)
    : files_(std::move(files)), folder_(std::string(kLedFolder) + "/" + name + "/") {}

std::string LedDevice::Text(const char* attribute) {
  auto text = files_->ReadAttribute(folder_ + attribute);
  if (!text) {
    throw LedFault("read", attribute, text.error);
  }
  return std::move(text.value);
}

void LedDevice::Write(const char* attribute, const std::string& text) {
  if (const auto written = files_->WriteAttribute(folder_ + attribute, text); !written) {
    throw LedFault("write " + text + " to", attribute, written.error);
  }
}

LedDevice::Setting LedDevice::Read() {
  Setting setting{kNoTrigger, Text("brightness"), "", ""};
  // The list of all triggers is longer than other attributes; the one that is active stands in brackets.
  const auto list = files_->ReadText(folder_ + "trigger");
  if (!list && list.error != ENOENT) {
    throw LedFault("read", "trigger", list.error);
  }
  triggers_.clear();
  std::istringstream words(list.value);
  for (std::string word; words >> word;) {
    if (word.size() > 2 && word.front() == '[' && word.back() == ']') {
      word = setting.trigger = word.substr(1, word.size() - 2);
    }
    triggers_.push_back(word);
  }
  if (setting.trigger == kTimerTrigger) {
    setting.delayOn = Text("delay_on");
    setting.delayOff = Text("delay_off");
  }
  return setting;
}

bool LedDevice::OffersTimer() const {
  return std::ranges::find(triggers_, kTimerTrigger) != triggers_.end();
}

LedDevice::Setting LedDevice::SettingFor(LedLook look) {
  if (look == LedLook::Off) {
    return {kNoTrigger, "0", "", ""};
  }
  if (look == LedLook::Blinking && OffersTimer()) {
    return {kTimerTrigger, "", kBlinkMilliseconds, kBlinkMilliseconds};
  }
  const std::string highest = Text("max_brightness");
  unsigned number = 0;
  std::from_chars(highest.data(), highest.data() + highest.size(), number);
  if (number == 0) {
    throw std::runtime_error("max_brightness is \"" + highest + "\"");
  }
  // A LED that knows only on and off is better on than off.
  return {kNoTrigger, std::to_string(look == LedLook::On ? number : std::max(number / 2, 1U)), "", ""};
}

/// The trigger first: a brightness of 0 would take it away again.
void LedDevice::Apply(const Setting& setting) {
  if (!triggers_.empty()) {
    Write("trigger", setting.trigger);
  }
  if (setting.trigger == kTimerTrigger) {
    Write("delay_on", setting.delayOn);
    Write("delay_off", setting.delayOff);
  } else if (setting.trigger == kNoTrigger) {
    Write("brightness", setting.brightness);
  }
}

std::string LedDevice::Describe(const Setting& setting) {
  if (setting.trigger == kTimerTrigger) {
    return "trigger timer with " + setting.delayOn + "/" + setting.delayOff + " ms";
  }
  return setting.trigger == kNoTrigger ? "brightness " + setting.brightness : "trigger " + setting.trigger;
}

std::string LedDevice::Show(LedLook look) {
  try {
    const Setting found = Read();
    if (!former_) {
      former_ = found;
    }
    const Setting wanted = SettingFor(look);
    const bool stays = shown_ == look;
    if (found == wanted) {
      shown_ = look;
      return "";
    }
    Apply(wanted);
    shown_ = look;
    if (const Setting now = Read(); now != wanted) {
      return Describe(wanted) + " was written, " + Describe(now) + " was read back";
    }
    return stays ? "another program had set it to " + Describe(found) + "; it is set again" : "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

std::string LedDevice::Restore() {
  try {
    if (former_) {
      Apply(*former_);
    }
    return "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

void CheckLed(SystemFiles& files, const std::string& name) {
  const auto leds = files.List(kLedFolder);
  // Only what is listed is ever made a path of: no "/", no "..".
  if (std::ranges::find(leds.value, name) != leds.value.end()) {
    return;
  }
  std::string known;
  for (const std::string& led : leds.value) {
    known += (known.empty() ? "" : ", ") + led;
  }
  throw std::runtime_error("there is no LED \"" + name + "\". " +
                           (known.empty() ? "This machine has none that the kernel knows."
                                          : "Those that there are: " + known + "."));
}

}  // namespace emstatus::host
