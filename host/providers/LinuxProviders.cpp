#include "host/providers/LinuxProviders.h"

#include <utility>

#include "host/providers/DiskProvider.h"
#include "host/providers/EdacProvider.h"
#include "host/providers/FilesystemProvider.h"
#include "host/providers/HwmonProvider.h"
#include "host/providers/MdProvider.h"
#include "host/providers/MemoryProvider.h"
#include "host/providers/NetworkProvider.h"
#include "host/providers/NvmeProvider.h"
#include "host/providers/PowerSupplyProvider.h"
#include "host/providers/PressureProvider.h"
#include "host/providers/ProcessProvider.h"
#include "host/providers/ProcessorProvider.h"
#include "host/providers/RealFiles.h"
#include "host/providers/ThermalZoneProvider.h"
#include "host/providers/UnitProvider.h"

namespace emstatus::host {

std::vector<std::unique_ptr<Provider>> MakeLinuxProviders(const LinuxOptions& options) {
  const FilesFactory files = [sys = options.sysRoot, proc = options.procRoot] {
    return std::make_unique<RealFiles>(sys, proc);
  };
  // Drives and systemd answer for the machine we run on, not for the copy of another.
  const bool isThisMachine = options.sysRoot == "/sys" && options.procRoot == "/proc";
  std::vector<std::unique_ptr<Provider>> providers;
  for (const HwmonKind kind : {HwmonKind::Board, HwmonKind::Nvme, HwmonKind::Sata}) {
    providers.push_back(std::make_unique<HwmonProvider>(files, kind));
  }
  providers.push_back(std::make_unique<ThermalZoneProvider>(files));
  providers.push_back(std::make_unique<PowerSupplyProvider>(files));
  providers.push_back(std::make_unique<ProcessorProvider>(files()));
  providers.push_back(std::make_unique<EdacProvider>(files(), options.stateFolder));
  providers.push_back(std::make_unique<MemoryProvider>(files()));
  providers.push_back(std::make_unique<PressureProvider>(files()));
  providers.push_back(std::make_unique<NvmeProvider>(files()));
  providers.push_back(std::make_unique<DiskProvider>(files, isThisMachine ? MakeSmartReader() : nullptr));
  providers.push_back(std::make_unique<MdProvider>(files));
  providers.push_back(std::make_unique<FilesystemProvider>(files, options.filesystems));
  providers.push_back(std::make_unique<NetworkProvider>(files(), options.requiredLinks));
  if (!options.requiredProcesses.empty()) {
    providers.push_back(std::make_unique<ProcessProvider>(files(), options.requiredProcesses));
  }
  if (auto manager = isThisMachine ? MakeSystemdManager() : nullptr) {
    providers.push_back(std::make_unique<UnitProvider>(std::move(manager), options.requiredUnits));
  }
  return providers;
}

}  // namespace emstatus::host
