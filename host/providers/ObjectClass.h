#pragma once

#include <cstdint>

namespace emstatus::host {

/// The kinds of object that a machine's health is told of. The numbers are the "OC" of a module's request
/// (docs/HOST.md lists them); a number is never given to another kind later.
enum class ObjectClass : std::uint16_t {
  Temperature = 0x0101,
  Fan = 0x0102,
  Voltage = 0x0103,
  Current = 0x0104,
  Power = 0x0105,
  Humidity = 0x0106,
  Intrusion = 0x0107,
  ThermalZone = 0x0108,

  PowerSupply = 0x0201,
  Battery = 0x0202,

  Processor = 0x0301,
  ProcessorThrottle = 0x0302,
  CpuPressure = 0x0303,

  MemoryModule = 0x0401,
  MemoryUse = 0x0402,
  SwapUse = 0x0403,
  MemoryPressure = 0x0404,

  Disk = 0x0501,
  DiskTemperature = 0x0502,
  RaidArray = 0x0503,
  RaidMember = 0x0504,
  StorageController = 0x0505,
  IoPressure = 0x0506,

  FilesystemSpace = 0x0601,
  FilesystemInodes = 0x0602,
  FilesystemHealth = 0x0603,

  NetworkLink = 0x0701,
  NetworkBond = 0x0702,

  Process = 0x0801,
  ServiceUnit = 0x0802,
  /// A provider itself: whether it still reads in time.
  HealthSource = 0x0803,
};

}  // namespace emstatus::host
