// Consensus of many trees that resemble each other, as those of one search do, on both memory
// paths.
#include <benchmark/benchmark.h>

#include <numeric>
#include <random>

#include "base/arena.h"
#include "consensus/conflict_consensus.h"
#include "consensus/majority_consensus.h"
#include "consensus/strict_consensus.h"

namespace {

using namespace zeb;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

std::vector<tree_node> random_binary_tree(int ntax, std::mt19937& random) {
  std::vector<tree_node> tree(at(2 * ntax - 1), ntax);
  std::vector<int> nodes{0, 1};
  int next = ntax + 1;
  for (int t = 2; t < ntax; ++t) {
    const int target = nodes[random() % nodes.size()];
    const int joint = next++;
    tree[at(joint)] = tree[at(target)];
    tree[at(target)] = tree[at(t)] = joint;
    nodes.push_back(joint);
    nodes.push_back(t);
  }
  tree[at(ntax)] = next;
  return tree;
}

/// Moves one of the first `movable` terminals onto the branch of another of them, so that groups of
/// the others stay in all trees.
void move_terminal(std::vector<tree_node>& tree, int ntax, int movable, std::mt19937& random) {
  const int moved = static_cast<int>(random() % at(movable));
  const int joint = tree[at(moved)];
  if (joint == ntax) return;
  int sister = 0;
  for (int n = 0; n < 2 * ntax - 1; ++n)
    if (n != moved && n != ntax && tree[at(n)] == joint) sister = n;
  const int target = static_cast<int>(random() % at(movable));
  if (target == moved || target == sister) return;
  tree[at(sister)] = tree[at(joint)];
  tree[at(joint)] = tree[at(target)];
  tree[at(target)] = joint;
}

tree_selection selection(int ntax, int n, int moves, std::vector<std::vector<tree_node>>& keep) {
  std::mt19937 random(1);
  keep.assign(1, random_binary_tree(ntax, random));
  while (static_cast<int>(keep.size()) < n) {
    keep.push_back(keep.front());
    for (int m = 0; m < moves; ++m) move_terminal(keep.back(), ntax, ntax / 5, random);
  }
  tree_selection out;
  out.ntax = ntax;
  for (std::vector<tree_node>& tree : keep) {
    normalise_tree(tree, ntax);
    out.trees.emplace_back(tree);
  }
  return out;
}

/// Arguments: taxa, trees, moves from the first tree, little memory.
template <class method>
void run_consensus(benchmark::State& state, const method& consensus_of) {
  std::vector<std::vector<tree_node>> keep;
  tree_selection trees =
      selection(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                static_cast<int>(state.range(2)), keep);
  trees.low_memory = state.range(3) != 0;
  create_arena(2'000'000'000);
  for (auto _ : state) {
    arena.peak_ram = 0;
    benchmark::DoNotOptimize(consensus_of(trees));
  }
  state.counters["arena_Mbytes"] = static_cast<double>(arena.peak_ram) / 1e6;
  release_arena();
}

void strict(benchmark::State& state) { run_consensus(state, strict_consensus); }
void majority(benchmark::State& state) {
  run_consensus(state, [](const tree_selection& t) { return majority_consensus(t, 50); });
}
void differences(benchmark::State& state) {
  run_consensus(state, [](const tree_selection& t) { return difference_consensus(t, 0); });
}
void components(benchmark::State& state) { run_consensus(state, component_consensus); }

void sizes(benchmark::internal::Benchmark* b) {
  b->Unit(benchmark::kMillisecond)->ArgNames({"taxa", "trees", "moves", "little_memory"});
  for (const int little : {0, 1}) {
    b->Args({500, 10000, 10, little});
    b->Args({5000, 1000, 100, little});
  }
}
void table_sizes(benchmark::internal::Benchmark* b) {
  b->Unit(benchmark::kMillisecond)->ArgNames({"taxa", "trees", "moves", "little_memory"});
  b->Args({500, 1000, 10, 0});
}
BENCHMARK(strict)->Apply(sizes);
BENCHMARK(majority)->Apply(sizes);
BENCHMARK(differences)->Apply(table_sizes);
BENCHMARK(components)->Apply(table_sizes);

}  // namespace
