#include <algorithm>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/Benchmarks.h"
#include "bench/TreeOfNodes.h"
#include "tree/StatusExport.h"

namespace emstatus::bench {
namespace {

std::string TextOf(const OwnedValue& value) {
  return {value.string.text, value.string.length};
}

/// The members of the text, each a piece.
std::vector<std::string> Pieces(const std::string& text) {
  std::vector<std::string> pieces;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t comma = std::min(text.find(',', begin), text.size() - 1);
    pieces.push_back(text.substr(begin, comma + 1 - begin));
    begin = comma + 1;
  }
  return pieces;
}

void CountNodes(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * kNodes);
}

void AppendSameText(benchmark::State& state) {
  StatusTree tree;
  const std::string text = TextOf(*ExportStatusTree(tree, TenThousandNodes()));
  const auto pieces = Pieces(text);
  for (auto _ : state) {
    std::string copy;
    for (const std::string& piece : pieces) {
      copy += piece;
    }
    benchmark::DoNotOptimize(copy.data());
  }
  CountNodes(state);
}

void Export(benchmark::State& state) {
  StatusTree tree;
  for (auto _ : state) {
    const auto text = ExportStatusTree(tree, TenThousandNodes());
    benchmark::DoNotOptimize(text->string.text);
  }
  CountNodes(state);
}

}  // namespace

void RegisterExport() {
  benchmark::RegisterBenchmark("export, a node/append the same text by members", AppendSameText);
  benchmark::RegisterBenchmark("export, a node/ExportStatusTree", Export);
}

}  // namespace emstatus::bench
