// Speed of the optimisation engine: costs of joining, full passes, repair after a clip. The
// "copy" rows give the memory bandwidth of the same run, to compare the passes with.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>

#include "base/arena.h"
#include "engine/fit/implied_weighting.h"
#include "engine/fit/weighting_settings.h"
#include "engine/kernels/kernel_binding.h"
#include "engine/kernels/kernel_choice.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/passes/waves.h"
#include "engine/registration.h"
#include "engine/search_data.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"

namespace zeb {
namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

// ---- one pair of word arrays ----

struct pair_operands {
  explicit pair_operands(int group) {
    const int fields = 1400;
    const int per_word = fields_per_word[at(group)];
    const int words = ((fields + per_word - 1) / per_word + 15) / 16 * 16;
    layout.end0 = group == 0 ? words : 0;
    layout.end1 = layout.end2 = layout.end3 = words;
    std::mt19937 g(1);
    for (int w = 0; w < 512; ++w) {
      a[w] = static_cast<word>(g()) | static_cast<word>(g());
      b[w] = static_cast<word>(g()) | static_cast<word>(g());
    }
  }
  alignas(64) word a[512];
  alignas(64) word b[512];
  kernel_layout layout;
};

/// Arguments: width in bits, group (0 binary, 1 DNA).
void cost_pair_1400(benchmark::State& state) {
  const kernel_slots k = kernels_of_width(static_cast<int>(state.range(0)), scoring_mode::uniform);
  if (!k.cost_pair) {
    state.SkipWithError("not on this processor");
    return;
  }
  pair_operands o(static_cast<int>(state.range(1)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(o.a);
    benchmark::DoNotOptimize(k.cost_pair(o.a, o.b, o.layout, 2147483647));
  }
}
BENCHMARK(cost_pair_1400)->ArgNames({"bits", "group"})->ArgsProduct({{32, 64, 256, 512}, {0, 1}});

/// The same under implied weights, which walk over the failed fields: one in `1 << rarity` of the
/// bits of one operand is left out.
void fit_pair_1400(benchmark::State& state) {
  const kernel_slots k = kernels_of_width(static_cast<int>(state.range(0)), scoring_mode::implied);
  if (!k.fit.cost_pair) {
    state.SkipWithError("not on this processor");
    return;
  }
  pair_operands o(static_cast<int>(state.range(1)));
  std::mt19937 g(2);
  for (int w = 0; w < 512; ++w) {
    word gaps = 0xffffffffU;
    for (int i = 0; i < state.range(2); ++i) gaps &= static_cast<word>(g());
    o.a[w] = ~gaps;
    o.b[w] = 0xffffffffU;
  }
  std::vector<double> step_cost(512 * 16, 0.25);
  std::uint64_t joinings = 0;
  o.layout.fits.step_cost = step_cost.data();
  o.layout.fits.joining = &joinings;
  for (auto _ : state) {
    benchmark::DoNotOptimize(o.a);
    benchmark::DoNotOptimize(k.fit.cost_pair(o.a, o.b, o.layout, 1e9));
  }
}
BENCHMARK(fit_pair_1400)
    ->ArgNames({"bits", "group", "rarity"})
    ->ArgsProduct({{32, 64, 256, 512}, {0, 1}, {2, 4}});

// ---- a data set like a large alignment ----

/// DNA of 500 taxa evolved along a random tree: 1,400 sites, many of them nearly constant.
struct evolved_data {
  evolved_data() {
    create_arena(std::size_t{1} << 28);
    register_engine();
    const int ntax = 500;
    const int nchar = 1400;
    matrix.cell_bytes = 1;
    matrix.state_mask = 255;
    begin_matrix(ntax, nchar);
    std::mt19937 g(7);
    tree = random_tree(ntax, g);
    for (int c = 0; c < nchar; ++c) evolve(c, g);
    finish_matrix();
    tree[at(ntax)] = packed_matrix(true).nodes;
  }

  static std::vector<std::int32_t> random_tree(int n, std::mt19937& g) {
    std::vector<std::int32_t> anc(at(2 * n - 1), -1);
    anc[0] = anc[1] = n;
    for (int t = 2; t < n; ++t) {
      const int pick = static_cast<int>(g() % at(2 * t - 3));
      const int target = pick < t - 1 ? pick + 1 : n + 1 + (pick - (t - 1));
      anc[at(n + t - 1)] = anc[at(target)];
      anc[at(target)] = anc[at(t)] = n + t - 1;
    }
    return anc;
  }

  void evolve(int character, std::mt19937& g) {
    const int ntax = matrix.ntax;
    const double u = std::uniform_real_distribution<double>(0, 1)(g);
    const double change = 0.06 * u * u * u;
    std::vector<int> state(tree.size(), -1);
    state[at(ntax)] = static_cast<int>(g() % 4);
    for (int t = 0; t < ntax; ++t) {
      std::vector<int> path;
      int v = t;
      for (; state[at(v)] < 0; v = tree[at(v)]) path.push_back(v);
      int s = state[at(v)];
      for (auto p = path.rbegin(); p != path.rend(); ++p) {
        if (std::uniform_real_distribution<double>(0, 1)(g) < change) s = static_cast<int>(g() % 4);
        state[at(*p)] = s;
      }
      set_cell(t, character, 1U << s);
    }
  }

  std::vector<std::int32_t> tree;
};

evolved_data& evolved() {
  static evolved_data data;
  return data;
}

/// Data packed, with kernels of one width and the true tree in work.
search_data& in_work(int bits, bool implied = false) {
  evolved_data& e = evolved();
  weighting.on = implied;
  search_data& data = packed_matrix(true);
  bind_kernels(data);
  data.kernels = kernels_of_width(bits, mode_of(data));
  data.undo.piece_words = bits / 32;
  data.undo.capacity = static_cast<std::int32_t>(
      std::min(data.undo.where_size, data.undo.words_size / at(bits / 32)));
  tree_length(data, e.tree);
  if (implied) choose_cost_units(data);
  return data;
}

void full_down_and_final_pass(benchmark::State& state) {
  search_data& data = in_work(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(full_pass(data));
  // Down: two sets read, two written an internal node. Final: three read, two written an internal
  // node; two read, one written a terminal.
  const double words = static_cast<double>(data.nwords) * ((4.0 + 5.0) * data.n + 3.0 * data.n);
  state.counters["bytes_per_second"] = benchmark::Counter(
      4 * words, benchmark::Counter::kIsIterationInvariantRate, benchmark::Counter::kIs1024);
  state.counters["words_per_set"] = data.nwords;
}
BENCHMARK(full_down_and_final_pass)
    ->ArgName("bits")
    ->RangeMultiplier(2)
    ->Arg(32)
    ->Arg(64)
    ->Arg(256)
    ->Arg(512);

/// Copying as many bytes as a full pass touches (and, larger, from main memory).
void copy(benchmark::State& state) {
  std::vector<char> from(at(static_cast<int>(state.range(0))), 1);
  std::vector<char> to(from.size());
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.counters["bytes_per_second"] = benchmark::Counter(
      2.0 * static_cast<double>(from.size()), benchmark::Counter::kIsIterationInvariantRate,
      benchmark::Counter::kIs1024);
}
BENCHMARK(copy)->ArgName("bytes")->Arg(1 << 20)->Arg(1 << 28);

/// All clips of the tree in turn: detach, repair, undo. One iteration is one clip.
void clip_and_undo(benchmark::State& state) {
  search_data& data = in_work(static_cast<int>(state.range(0)));
  const bool with_undo = state.range(1) != 0;
  int clip = 0;
  for (auto _ : state) {
    do clip = clip + 1 < data.nodes ? clip + 1 : 1;
    while (clip == data.n || data.tree.anc[at(clip)] == data.n);
    const int sister = data.tree.sister[at(clip)];
    if (with_undo) begin_undo(data);
    const int joint = detach(data.tree, clip);
    repair_after_clip(data, sister, clip);
    if (!with_undo || !undo_sets(data)) {
      attach(data.tree, clip, joint, sister);
      repair_after_insert(data, clip);
    } else {
      attach(data.tree, clip, joint, sister);
    }
  }
  end_undo(data);
}
BENCHMARK(clip_and_undo)->ArgNames({"bits", "undo"})->ArgsProduct({{32, 64, 256, 512}, {0, 1}});

/// One clip against all branches of the tree under a bound of what its own place costs, as a search
/// does. One iteration is all clips of one terminal each against all branches.
void scan_all_branches(benchmark::State& state) {
  search_data& data = in_work(static_cast<int>(state.range(0)));
  std::vector<std::int32_t> nodes;
  for (int v = 1; v < data.nodes; ++v)
    if (v != data.n) nodes.push_back(v);
  const int count = static_cast<int>(nodes.size());
  std::int64_t pairs = 0;
  for (auto _ : state) {
    for (int t = 1; t < data.n; t += 10) {
      std::int32_t cost = 0;
      for (int i = 0; i < count; ++i)
        i = data.kernels.scan_pairs(data.sets[at(t)].branch, data.branch_base, data.set_stride,
                                    nodes.data(), i, count, data.layout,
                                    static_cast<std::int32_t>(state.range(1)), &cost);
      benchmark::DoNotOptimize(cost);
      pairs += count;
    }
  }
  state.counters["ns_per_pair"] = benchmark::Counter(
      static_cast<double>(pairs) * 1e-9, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(scan_all_branches)
    ->ArgNames({"bits", "bound"})
    ->ArgsProduct({{32, 64, 256, 512}, {10, 30, 100000}});

/// The same under implied weights, with a bound in fit.
void fit_scan_all_branches(benchmark::State& state) {
  search_data& data = in_work(static_cast<int>(state.range(0)), true);
  std::vector<std::int32_t> nodes;
  for (int v = 1; v < data.nodes; ++v)
    if (v != data.n) nodes.push_back(v);
  const int count = static_cast<int>(nodes.size());
  const double bound = static_cast<double>(state.range(1)) / 100;
  std::int64_t pairs = 0;
  for (auto _ : state) {
    for (int t = 1; t < data.n; t += 10) {
      double cost = 0;
      for (int i = 0; i < count; ++i)
        i = data.kernels.fit.scan_pairs(data.sets[at(t)].branch, data.branch_base, data.set_stride,
                                        nodes.data(), i, count, data.layout, bound, &cost);
      benchmark::DoNotOptimize(cost);
      pairs += count;
    }
  }
  state.counters["ns_per_pair"] = benchmark::Counter(
      static_cast<double>(pairs) * 1e-9, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(fit_scan_all_branches)
    ->ArgNames({"bits", "hundredths"})
    ->ArgsProduct({{32, 64, 256, 512}, {10, 30, 100}});

}  // namespace
}  // namespace zeb
