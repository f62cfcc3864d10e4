#include "fuzz/ScannedSystem.h"

#include <algorithm>
#include <utility>

#include "config/ConfigurationReader.h"
#include "data/Command.h"
#include "data/JsonWriter.h"
#include "data/OwnedCommand.h"
#include "fuzz/Check.h"
#include "fuzz/MemoryFile.h"

namespace emstatus::fuzz {

ScannedSystem::ScannedSystem(std::function<void(HostCommand&)> answer)
    : answer_(std::move(answer)),
      scan_({.host = *this,
             .configuration = configuration,
             .simulation = simulation,
             .cabinets = cabinets,
             .tree = tree,
             .switchShutdown = switchShutdown,
             .raidRefresh = raidRefresh_}),
      requests_(configuration, tree, wakeUp_,
                [this](const RequestRecord& request) { return HostQuery(*this).QueryCommand(request); }) {
  wakeUp_.Create(false, true);
}

void ScannedSystem::SendRequest(HostCommand& command) {
  if (requestsLeft == 0) {
    switchShutdown = true;
    SetStatus(command, answer::kFailed);
    return;
  }
  --requestsLeft;
  answer_(command);
}

void ScannedSystem::SendEvent(HostCommand& command) {
  const std::uint32_t operation = GetInt(command, "OC", 0);
  EM_FUZZ_CHECK(operation == 0x2322 || operation == 0x230F);
  EM_FUZZ_CHECK(HasMember(command, "DA"));
  EM_FUZZ_CHECK(!JsonText(command.document).empty());
}

void ScannedSystem::Scan(std::uint64_t cycle) {
  scan_.QuerySystemStatus(cycle);
  CheckTree();
}

void ScannedSystem::CheckTree() const {
  const auto scan = tree.Current();
  EM_FUZZ_CHECK(scan->system <= Error);
  std::size_t filled = 0;
  std::size_t listed = 0;
  for (const auto& [id, node] : scan->nodes) {
    if (node.id.empty()) continue;
    ++filled;
    listed += node.children.size();
    EM_FUZZ_CHECK(node.id == id);
    for (const std::string& child : node.children) {
      const StatusTreeNode* found = scan->FindNode(child);
      EM_FUZZ_CHECK(found != nullptr && found->parentId == id);
    }
    EM_FUZZ_CHECK(node.parentId.empty() == (id == kRootId));
  }
  // One list entry for every node but the root: none is lost, none is listed twice.
  EM_FUZZ_CHECK(filled == 0 || filled == listed + 1);
}

void ScannedSystem::Ask(std::uint32_t operation, std::uint32_t extension, std::uint32_t object,
                        std::string_view node) {
  OwnedCommand command({.operation = operation, .extension = extension, .object = object});
  if (!node.empty()) command.AddData(OwnedValue::Text(node));
  EM_FUZZ_CHECK(requests_.OnRequest(command));
  const std::uint32_t status = GetInt(command, "ST", kStatusAbsent);
  EM_FUZZ_CHECK(status == answer::kSuccess || status == answer::kNotHandled ||
                status == answer::kBadParameter || status == answer::kFailed || status == answer::kOpen);
}

void ScannedSystem::AskEverything() {
  for (const std::uint32_t operation : {0x2300U, 0x230FU, 0x2339U}) Ask(operation, 0, 0, "");
  constexpr std::uint32_t kOfComponents[] = {0x2301, 0x2302, 0x2304, 0x2305, 0x2306, 0x2307, 0x2308, 0x2309,
                                             0x230A, 0x2310, 0x2311, 0x2312, 0x2313, 0x2314, 0x2320, 0x2322};
  for (const std::uint32_t operation : kOfComponents) {
    const std::uint32_t shift = operation >= 0x2320 ? 16 : 0;
    for (std::uint32_t subsystem = 0; subsystem < 2; ++subsystem) Ask(operation, subsystem << shift, 1, "");
  }
  std::size_t nodesLeft = 8;
  for (const auto& [id, node] : tree.Current()->nodes) {
    if (nodesLeft-- == 0) break;
    for (std::uint32_t operation = 0x2330; operation <= 0x2338; ++operation) Ask(operation, 0, 0, id);
  }
}

StatusConfiguration ConfigurationOf(std::string_view text) {
  MemoryFile file;
  file.Write(text);
  ConfigurationReader reader(
      [&file](std::string& path) {
        path = file.Path();
        return true;
      },
      [] { return false; });
  StatusConfiguration configuration;
  EM_FUZZ_CHECK(reader.ReadConfigurationFile(configuration));
  return configuration;
}

}  // namespace emstatus::fuzz
