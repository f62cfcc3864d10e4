#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "host/machine/Machine.h"

namespace emstatus::host {

/// A way in which one object fails, as far as a module can see it.
enum class Fault : std::uint8_t {
  /// Raw states 1 and 2.
  Warning,
  Failed,
  /// Failed, when others of its redundancy group already have, so that fewer are left than are needed.
  FailedTooMany,
  /// Beyond the number that Question::StateAbove or StateBelow gives.
  BeyondLimit,
  /// Raw states 10, 11, 12 and 14.
  Late,
  SensorFault,
  Implausible,
  Lost,
  /// No question about the object is answered.
  NoAnswer,
};

/// "sensor fault". [any thread]
std::string_view WordOf(Fault fault);

/// The faults that can show in the answers to `question` about this object; those that cannot are left out.
/// [any thread]
std::vector<Fault> FaultsOf(const Reading& reading, Question question);

/// The reading as it is with the fault. [any thread]
Reading WithFault(Reading reading, Fault fault);

}  // namespace emstatus::host
