#pragma once

#include <poll.h>

#include <chrono>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "host/providers/Reading.h"

namespace emstatus::host {

/// The moment of a read. Providers take the time from here, never from a clock, so that tests can set it.
struct ReadContext {
  /// For ages, rates and hold times.
  std::chrono::steady_clock::time_point now;
  /// For what is kept over restarts.
  std::chrono::system_clock::time_point wallTime;
  /// Set when the host ends; a read with many devices looks at it between them.
  std::stop_token stop;
};

/// One source of readings: hwmon, filesystems, links, ... The host gives each provider a thread of its own
/// (its worker), so a slow device delays no other provider; the module is answered from the last readings,
/// which become late by age. Construction reads nothing.
class Provider {
 public:
  Provider() = default;
  Provider(const Provider&) = delete;
  Provider& operator=(const Provider&) = delete;
  virtual ~Provider() = default;

  /// A short word for people, unique among the providers ("hwmon"). The same text always. [any thread]
  virtual std::string_view Name() const = 0;

  /// Time from the start of one read to the start of the next. Constant. [any thread]
  virtual std::chrono::milliseconds Interval() const = 0;

  /// Age from which a reading counts as late. Constant. [any thread]
  virtual std::chrono::milliseconds LateAfter() const { return Interval() * 3; }

  /// Tells every object that there is now, with the ones that could not be read (quality says why). What
  /// the machine does not have is absent. An object told before and no longer told becomes Lost (or Inactive,
  /// Reading::mayGo) by the host, which remembers it; it comes back under the same id. An exception makes
  /// the HealthSource object of this provider bad and leaves the readings to grow old. [worker]
  virtual std::vector<Reading> Read(const ReadContext& context) = 0;

  /// Clears what the object has latched (an intrusion alarm). False when there is nothing to clear, or it
  /// failed. The next Read follows at once. [worker]
  virtual bool Confirm(ObjectClass objectClass, const std::string& id) {
    static_cast<void>(objectClass);
    static_cast<void>(id);
    return false;
  }

  /// Adds descriptors (with their events, POLLPRI for sysfs) whose readiness makes the next Read come before
  /// its interval is over. They stay open until the next Read or Confirm. [worker, after each Read]
  virtual void Watch(std::vector<pollfd>& descriptors) { static_cast<void>(descriptors); }
};

}  // namespace emstatus::host
