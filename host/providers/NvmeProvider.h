#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/Provider.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// What the kernel tells of an NVMe controller.
struct NvmeController {
  std::string name;
  /// "live", "connecting", "resetting", "dead", ...
  FileResult<std::string> state;
  std::string model;
  std::string serial;
  /// Name of the subsystem that it leads to; several controllers may lead to one.
  std::string subsystem;
  /// "pcie", "tcp", "rdma", "fc".
  std::string transport;
  /// Number among the controllers of the subsystem; a connection across a network gets a new one each time.
  std::string number;
  /// Where it is: PCI or network address.
  std::string address;
};

/// The reading of a controller by its state. [any thread]
Reading JudgeNvme(const NvmeController& controller);

/// NVMe controllers, local and across a network. Those that lead to one subsystem are a redundancy group.
class NvmeProvider final : public Provider {
 public:
  explicit NvmeProvider(const FilesFactory& makeFiles,
                        std::chrono::milliseconds patience = ReadLanes::kPatience);

  std::string_view Name() const override { return "nvme controllers"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(5); }
  std::vector<Reading> Read(const ReadContext& context) override;

 private:
  const std::unique_ptr<SystemFiles> files_;
  DeviceReads<NvmeController> reads_;
};

}  // namespace emstatus::host
