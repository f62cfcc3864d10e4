#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/Benchmarks.h"
#include "bench/TreeOfNodes.h"
#include "data/Command.h"
#include "data/OwnedCommand.h"
#include "tree/RequestHandler.h"

namespace emstatus::bench {
namespace {

constexpr std::uint32_t kNodeDesignation = 0x2335;

/// Ids from all over the tree.
const std::vector<std::string>& AskedIds() {
  static const std::vector<std::string> ids = [] {
    std::vector<std::string> chosen;
    std::size_t position = 0;
    constexpr std::size_t kEach = 97;
    for (const auto& [id, node] : TenThousandNodes().nodes) {
      if (position++ % kEach == 0) {
        chosen.push_back(id);
      }
    }
    return chosen;
  }();
  return ids;
}

void FindAndCopy(benchmark::State& state) {
  const auto& nodes = TenThousandNodes().nodes;
  for (auto _ : state) {
    for (const std::string& id : AskedIds()) {
      const StatusTreeNode copy = nodes.find(id)->second;
      benchmark::DoNotOptimize(copy.status);
    }
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(AskedIds().size()));
}

OwnedCommand CommandFor(const std::string& id) {
  OwnedCommand command({.operation = kNodeDesignation});
  command.AddData(OwnedValue::Text(id));
  return command;
}

void MakeCommand(benchmark::State& state) {
  for (auto _ : state) {
    for (const std::string& id : AskedIds()) {
      const OwnedCommand command = CommandFor(id);
      benchmark::DoNotOptimize(command.current);
    }
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(AskedIds().size()));
}

void Query(benchmark::State& state) {
  CurrentConfiguration configuration;
  StatusTree tree;
  tree.Publish(TenThousandNodes());
  EventHandle wakeUp;
  const RequestHandler handler(configuration, tree, wakeUp, [](const RequestRecord&) { return false; });
  for (auto _ : state) {
    for (const std::string& id : AskedIds()) {
      OwnedCommand command = CommandFor(id);
      handler.OnRequest(command);
      if (GetInt(command, "ST", 1) != answer::kSuccess) {
        state.SkipWithError("the node was not found");
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(AskedIds().size()));
}

}  // namespace

void RegisterNodeQuery() {
  benchmark::RegisterBenchmark("node query/std::map find and copy", FindAndCopy);
  benchmark::RegisterBenchmark("node query/making the command alone", MakeCommand);
  benchmark::RegisterBenchmark("node query/command and OnRequest", Query);
}

}  // namespace emstatus::bench
