// Reading and writing 10,000 random binary trees of 500 taxa, parenthetical and compact.
#include <benchmark/benchmark.h>

#include <numeric>
#include <string>
#include <vector>

#include "matrix/matrix.h"
#include "support/program.h"
#include "trees/generated_trees.h"
#include "trees/notation/compact_format.h"
#include "trees/tree_store.h"

namespace {

constexpr int taxa = 500;
constexpr int trees = 10000;

/// The commands that read the matrix; room for the trees; file names of the trees in both forms.
std::string matrix_text() {
  std::string text = "mxram 200; xread 1 " + std::to_string(taxa) + "\n";
  for (int t = 0; t < taxa; ++t) text += "taxon_" + std::to_string(t) + " 0\n";
  return text + ";\nhold " + std::to_string(trees) + ";\n";
}

void write_trees(const char* option) {
  zeb_test::run_program(matrix_text() + "randtrees " + std::to_string(trees) +
                        "; taxname =; tsave " + option + "; save; tsave/;\n");
}

void read_trees(benchmark::State& state, const char* written_as, const std::string& command) {
  write_trees(written_as);
  const std::string text = "keep 0; " + command + ";\n";
  for (auto round : state) {
    zeb_test::run_program(text);
    benchmark::DoNotOptimize(round);
  }
  if (zeb::store.ntrees != trees) state.SkipWithError("the trees weren't read");
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * trees);
  std::remove("/tmp/zeb_bench_trees");
}

void read_trees_by_name(benchmark::State& state) {
  read_trees(state, "*/tmp/zeb_bench_trees", "proc /tmp/zeb_bench_trees");
}
BENCHMARK(read_trees_by_name)->Unit(benchmark::kMillisecond);

void read_trees_by_number(benchmark::State& state) {
  write_trees("*/tmp/zeb_bench_trees");
  zeb_test::run_program("taxname -; tsave */tmp/zeb_bench_trees; save; tsave/;");
  for (auto round : state) {
    zeb_test::run_program("keep 0; proc /tmp/zeb_bench_trees;\n");
    benchmark::DoNotOptimize(round);
  }
  if (zeb::store.ntrees != trees) state.SkipWithError("the trees weren't read");
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * trees);
  std::remove("/tmp/zeb_bench_trees");
}
BENCHMARK(read_trees_by_number)->Unit(benchmark::kMillisecond);

void read_compact_trees(benchmark::State& state) {
  std::remove("/tmp/zeb_bench_trees");
  read_trees(state, "/tmp/zeb_bench_trees", "shortread /tmp/zeb_bench_trees");
}
BENCHMARK(read_compact_trees)->Unit(benchmark::kMillisecond);

void write_compact_tree(benchmark::State& state) {
  const int ntax = static_cast<int>(state.range(0));
  std::vector<int> all(static_cast<std::size_t>(ntax));
  std::iota(all.begin(), all.end(), 0);
  std::vector<zeb::tree_node> tree(2 * all.size() - 1, 0);
  zeb::random_binary_tree(all, tree, ntax);
  std::vector<std::uint8_t> bytes;
  for (auto round : state) {
    bytes.clear();
    zeb::append_compact_tree(tree, ntax, bytes);
    benchmark::DoNotOptimize(round);
  }
}
BENCHMARK(write_compact_tree)->Arg(500)->Arg(20000)->Unit(benchmark::kMicrosecond);

}  // namespace
