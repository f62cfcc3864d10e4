#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// How a LED shows the machine's status.
enum class LedLook {
  /// Good, or nothing known yet.
  Off,
  /// Warning.
  Blinking,
  /// Error.
  On,
};

/// The look for the value of the error LED, and for nothing else: the same tree looks the same. [any thread]
LedLook LookOf(std::uint32_t ledValue);

/// One LED of the kernel, /sys/class/leds/NAME. Calls take as long as the device does. [one thread]
class LedDevice {
 public:
  /// `name` has passed CheckLed().
  LedDevice(std::unique_ptr<SystemFiles> files, const std::string& name);

  /// Makes the LED look so unless it does, and reads back whether it does now. Empty, or what is wrong, for
  /// people.
  std::string Show(LedLook look);

  /// Gives the LED back as it was before the first Show(). Empty, or what is wrong.
  std::string Restore();

 private:
  /// What the LED is set to; delays only with the timer trigger.
  struct Setting {
    std::string trigger;
    std::string brightness;
    std::string delayOn;
    std::string delayOff;

    /// The brightness counts only without a trigger: one that is active changes it.
    bool operator==(const Setting& other) const;
  };

  std::string Text(const char* attribute);
  void Write(const char* attribute, const std::string& text);
  Setting Read();
  void Apply(const Setting& setting);
  Setting SettingFor(LedLook look);
  bool OffersTimer() const;
  static std::string Describe(const Setting& setting);

  const std::unique_ptr<SystemFiles> files_;
  const std::string folder_;
  /// The triggers that there are; none when the LED has no such file.
  std::vector<std::string> triggers_;
  std::optional<Setting> former_;
  std::optional<LedLook> shown_;
};

/// Throws a std::runtime_error that lists the LEDs that there are when `name` is none of them. [any thread]
void CheckLed(SystemFiles& files, const std::string& name);

}  // namespace emstatus::host
