#include "host/providers/LinuxProviders.h"

#include <algorithm>
#include <utility>

#include "host/providers/DiskProvider.h"
#include "host/providers/EdacProvider.h"
#include "host/providers/FilesystemProvider.h"
#include "host/providers/HwmonProvider.h"
#include "host/providers/KernelText.h"
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

namespace {

bool HoldsProcesses(SystemFiles& files) {
  return std::ranges::any_of(files.List("/proc").value,
                             [](const std::string& name) { return NumberAfter(name, "").has_value(); });
}

}  // namespace

std::vector<std::unique_ptr<Provider>> MakeLinuxProviders(const LinuxOptions& options) {
  const FilesFactory files = [root = options.root] { return std::make_unique<RealFiles>(root); };
  const std::unique_ptr<SystemFiles> look = files();
  const bool isThisMachine = options.root.empty();
  // What every machine has, unless it is a copy that does not hold it.
  const auto has = [&](const char* path) { return isThisMachine || look->RealPath(path).error == 0; };
  std::vector<std::unique_ptr<Provider>> providers;
  for (const HwmonKind kind : {HwmonKind::Board, HwmonKind::Nvme, HwmonKind::Sata}) {
    providers.push_back(std::make_unique<HwmonProvider>(files, kind));
  }
  providers.push_back(std::make_unique<ThermalZoneProvider>(files));
  providers.push_back(std::make_unique<PowerSupplyProvider>(files));
  providers.push_back(std::make_unique<ProcessorProvider>(files()));
  providers.push_back(std::make_unique<EdacProvider>(files, options.stateFolder));
  if (has("/proc/meminfo")) {
    providers.push_back(std::make_unique<MemoryProvider>(files()));
  }
  providers.push_back(std::make_unique<PressureProvider>(files()));
  providers.push_back(std::make_unique<NvmeProvider>(files));
  providers.push_back(std::make_unique<DiskProvider>(files, isThisMachine ? MakeSmartReader() : nullptr));
  providers.push_back(std::make_unique<MdProvider>(files));
  if (has("/proc/self/mountinfo")) {
    providers.push_back(std::make_unique<FilesystemProvider>(files, options.filesystems));
  }
  providers.push_back(std::make_unique<NetworkProvider>(files, options.requiredLinks));
  if (!options.requiredProcesses.empty() && (isThisMachine || HoldsProcesses(*look))) {
    providers.push_back(std::make_unique<ProcessProvider>(files(), options.requiredProcesses));
  }
  auto manager = isThisMachine ? MakeSystemdManager() : nullptr;
  if (manager || !options.requiredUnits.empty()) {
    providers.push_back(std::make_unique<UnitProvider>(std::move(manager), options.requiredUnits));
  }
  return providers;
}

}  // namespace emstatus::host
