#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "host/providers/ObjectClass.h"

namespace emstatus::host {

/// How good the object is. Means something only when the reading's quality is Quality::Good.
enum class Condition : std::uint8_t { Good, Warning, Critical };

/// How far the reading can be trusted. Anything but Good says that the condition is not known.
enum class Quality : std::uint8_t {
  /// Read, plausible, and not too old.
  Good,
  /// No answer within its time (also: never read yet). The last value is not repeated as new.
  Late,
  /// The sensor says that it is broken, or reading it fails (fault flag, EIO, ENXIO).
  SensorFault,
  /// A sentinel, or outside what is physically possible.
  Implausible,
  /// Switched off by intent: nothing is wrong, nothing is known (ENODATA, administratively down, empty slot).
  Inactive,
  /// Was there and is gone.
  Lost,
};

enum class Unit : std::uint8_t {
  None,
  Celsius,
  RevolutionsPerMinute,
  Volt,
  Ampere,
  Watt,
  Percent,
  Byte,
  BitPerSecond,
  Second,
  /// A number of things or of happenings.
  Count,
};

/// In the unit of the measurement; what the device does not tell is absent.
struct Limits {
  std::optional<double> lowerCritical;
  std::optional<double> lowerWarning;
  std::optional<double> upperWarning;
  std::optional<double> upperCritical;

  friend bool operator==(const Limits&, const Limits&) = default;
};

struct Measurement {
  double value = 0;
  Unit unit = Unit::None;
  Limits limits;

  friend bool operator==(const Measurement&, const Measurement&) = default;
};

/// The group of equal parts that an object belongs to (fans of a zone, power supplies, links of a bond).
struct Redundancy {
  std::string group;
  /// Parts that the group has when it is whole.
  std::uint32_t members = 0;
  /// Parts without which it no longer does its work.
  std::uint32_t needed = 0;
  /// Parts that work now.
  std::uint32_t present = 0;

  friend bool operator==(const Redundancy&, const Redundancy&) = default;
};

/// What is known of one object at one moment. Condition, quality and age are kept apart: nothing that was not
/// read is ever good, so a fresh Reading is Late until its provider says otherwise.
struct Reading {
  ObjectClass objectClass = ObjectClass::HealthSource;

  /// Names the object for ever, within its class and provider ("coretemp.0/temp1"): it must not change from
  /// read to read nor, where the machine allows it, from boot to boot. Not for people.
  std::string id;

  /// For people, unique within the class as far as possible ("CPU package 0").
  std::string name;

  Condition condition = Condition::Good;
  Quality quality = Quality::Late;

  /// Absent for an object without a number, and for a number that cannot be trusted.
  std::optional<Measurement> measurement;

  /// Why the object is not good or not known, with value and limit, in one line without a full stop ("0 RPM,
  /// at least 600 RPM expected"). Empty when condition and quality are good. A note on a good object may
  /// stand here too ("check running, 40 %").
  std::string reason;

  /// What to do about it, where that is known ("replace the fan; it can be pulled while running").
  std::string advice;

  /// Whether the customer can mend or replace it without a service technician.
  bool customerServiceable = false;

  /// The object may go without this being a fault (a pluggable disk, a container's link): when it is no
  /// longer told it becomes Inactive instead of Lost.
  bool mayGo = false;

  std::optional<Redundancy> redundancy;

  /// The storage extension cabinet it sits in; absent for the server itself.
  std::optional<std::uint32_t> cabinet;

  /// When the value was taken; absent: when the Read that told it began. For values that a provider keeps
  /// over several reads because their device is asked seldom.
  std::optional<std::chrono::steady_clock::time_point> takenAt;

  /// Age from which it counts as late; absent: the provider's LateAfter().
  std::optional<std::chrono::milliseconds> lateAfter;

  friend bool operator==(const Reading&, const Reading&) = default;
};

}  // namespace emstatus::host
