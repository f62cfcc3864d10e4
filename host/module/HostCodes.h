#pragma once

#include <cstdint>

/// Operation codes ("OC") that pass between host and module beside the classes of objects.
namespace emstatus::host {

/// Requests of the module.
enum class ScanCommand : std::uint32_t {
  /// How many signals there are.
  SignalCount = 0x1030,
  /// What signal "OI" is for: 0 identify, 1 global error.
  SignalPurpose = 0x1031,
  /// Sets signal "OI" to the value in "DA".
  SetSignal = 0x1033,
  /// Read the RAID data again.
  RefreshRaid = 0x21DF,
};

/// Events of the module, and the requests of the host that read the same things.
enum class TreeCode : std::uint32_t {
  SubsystemId = 0x2302,
  SubsystemName = 0x2304,
  ComponentStatus = 0x2306,
  ComponentId = 0x2307,
  ComponentName = 0x2308,
  SystemStatus = 0x230F,
  InstanceBaseName = 0x2310,
  InstanceId = 0x2321,
  InstanceStatus = 0x2322,
  InstanceName = 0x2324,
  WholeTree = 0x2339,
};

/// A reply that makes the module scan at once: the machine has changed.
inline constexpr std::uint32_t kMachineChanged = 0x1801;

/// "ST" of what is an event and no reply.
inline constexpr std::uint32_t kEventStatus = 255;

/// Bit of the error LED's value: what is wrong is something that the customer can mend.
inline constexpr std::uint32_t kLedCustomerServiceable = 0x80;

}  // namespace emstatus::host
