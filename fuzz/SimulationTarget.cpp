// The simulation file: read, followed, and in force while two scans run.
// The input is the file; one that does not name itself is put behind what makes it active.

#include "data/Command.h"
#include "fuzz/Check.h"
#include "fuzz/HostileConfiguration.h"
#include "fuzz/ScannedSystem.h"
#include "fuzz/ScratchDirectory.h"

namespace emstatus::fuzz {
namespace {

constexpr const char* kFile = "EM_STATUS_simu.ini";

void Follow(const ScratchDirectory& directory, const std::string& text) {
  static const StatusConfiguration kConfiguration = ConfigurationOf(kHostileConfiguration);
  const EnteredDirectory entered(directory);
  directory.Write(kFile, text);
  ScannedSystem system([](HostCommand& command) { SetDataWord(command, 1); });
  system.configuration.Replace(kConfiguration);
  system.cabinets.Append(0);
  const bool hasEntries = system.simulation.BeginWithFile();
  system.simulation.FollowFile();
  if (!hasEntries) EM_FUZZ_CHECK(!system.simulation.Find("LEAF") && !system.simulation.Find("R255"));
  for (const std::uint64_t cycle : {1U, 2U}) system.Scan(cycle);
  system.AskEverything();
  directory.Write(kFile, "");
  system.simulation.FollowFile();
  EM_FUZZ_CHECK(!system.simulation.Find("LEAF"));
}

}  // namespace
}  // namespace emstatus::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const emstatus::fuzz::ScratchDirectory directory;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const bool whole = text.find("Filename") != std::string_view::npos;
  std::string file = whole ? "" : "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=1\n[Components]\n";
  emstatus::fuzz::Follow(directory, file.append(text));
  return 0;
}
