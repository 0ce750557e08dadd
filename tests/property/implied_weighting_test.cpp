// Implied weights in the packed engine, of all kinds: fits of trees and costs of joining against
// the oracle's steps by character, bounds, and the same bits in every width.
#include "engine/fit/implied_weighting.h"
#include "matrix/character_steps.h"
#include "matrix/matrix_layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

#include "base/arena.h"
#include "base/errors.h"
#include "base/process.h"
#include "engine/fit/weighting_settings.h"
#include "engine/joining.h"
#include "engine/kernels/kernel_binding.h"
#include "engine/kernels/kernel_choice.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/passes/waves.h"
#include "engine/settings.h"
#include "property/clipped_trees.h"
#include "property/plain_wide_kind.h"
#include "property/random_matrix.h"
#include "property/random_weighting.h"
#include "support/program.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }
constexpr double unbounded = std::numeric_limits<double>::infinity();

class implied_weighting : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    zeb_test::start_program();
    create_arena(std::size_t{1} << 28);
  }
  static void TearDownTestSuite() {
    engine = {};
    weighting = {};
    wipe_matrix();
  }
};

/// The oracle's data, and what its implied weights are.
struct weighted_data {
  zeb_test::oracle_matrix cells;
  naive::implied_weights how;
};

/// The fit by the oracle's steps.
double oracle_fit(const weighted_data& oracle, const search_data& data,
                  std::span<const std::int32_t> anc) {
  naive::rooted_tree tree{data.n, {anc.begin(), anc.end()}};
  tree.parent[at(data.n)] = -1;
  std::vector<double> homoplasy;
  std::vector<std::uint32_t> column(at(data.n));
  for (std::size_t c = 0; c < oracle.cells.cells.size(); ++c) {
    for (int t = 0; t < data.n; ++t)
      column[at(t)] = oracle.cells.cells[c][at(data.pack_to_taxon[at(t)])];
    const long steps = naive::least_steps(tree, column, oracle.cells.additive[c]);
    homoplasy.push_back(static_cast<double>(steps - minimum_steps(static_cast<int>(c)) +
                                            matrix.characters[c].internal_steps));
  }
  return naive::score(oracle.how, homoplasy);
}

/// All widths give the same bits, whatever the bound, and stop where they should.
void check_bounds(const search_data& data, const word* clip, const word* branch) {
  const kernel_slots reference = kernels_of_width(32, scoring_mode::implied);
  const kernel_layout& l = data.layout;
  const double cost = reference.fit.cost_pair(clip, branch, l, unbounded);
  for (const int bits : {32, 64, 256, 512}) {
    if (bits > widest_kernels()) continue;
    SCOPED_TRACE(::testing::Message() << bits << " bits");
    const fit_slots k = kernels_of_width(bits, scoring_mode::implied).fit;
    ASSERT_EQ(k.cost_pair(clip, branch, l, unbounded), cost);
    ASSERT_EQ(k.cost_pair(clip, branch, l, std::nextafter(cost, unbounded)), cost);
    ASSERT_GE(k.cost_pair(clip, branch, l, cost), cost);  // stopped: not below the bound
    ASSERT_GE(k.cost_pair(clip, branch, l, cost / 2), cost / 2);
  }
}

void check_scan(const search_data& data, const word* clip, const std::vector<std::int32_t>& items,
                double bound) {
  const int count = static_cast<int>(items.size());
  for (int from = 0; from <= count;) {
    int wanted = from;
    double wanted_cost = 0;
    for (; wanted < count; ++wanted) {
      wanted_cost = data.kernels.fit.cost_pair(clip, data.sets[at(items[at(wanted)])].branch,
                                               data.layout, unbounded);
      if (wanted_cost < bound) break;
    }
    double cost = -1;
    const int passed =
        data.kernels.fit.scan_bounds(clip, data.branch_base, data.set_stride, items.data(), from,
                                     count, data.layout, bound, &cost);
    ASSERT_LE(passed, wanted);
    if (passed == wanted && wanted < count) {
      ASSERT_LE(cost, wanted_cost * (1 + 1e-9));
    }
    const int found =
        data.kernels.fit.scan_pairs(clip, data.branch_base, data.set_stride, items.data(), from,
                                    count, data.layout, bound, &cost);
    ASSERT_EQ(found, wanted) << "from " << from << " bound " << bound;
    if (found < count) {
      ASSERT_EQ(cost, wanted_cost);
    }
    from = found + 1;
  }
}

/// A clip put elsewhere, with another root: its cost there, and the exact score, are those of the
/// tree that comes out; the counters follow.
void check_move(search_data& data, const weighted_data& oracle, std::mt19937& g) {
  constexpr double rounding = 1e-9;
  const int clip = zeb_test::draw_clip(data, g);
  const int sister = data.tree.sister[at(clip)];
  const double score = total_fit(data);
  const int joint = detach(data.tree, clip);
  repair_after_clip(data, sister, clip);
  const join_side own{join_end::root, clip};
  const join_side home{join_end::branch, sister};
  const double home_cost = remove_home_steps(data, own, home);
  const double apart = total_fit(data);
  ASSERT_NEAR(score, apart + home_cost, rounding);
  ASSERT_NEAR(join_cost(data, own, home, unbounded), home_cost, rounding);

  const std::vector<int> subtree = zeb_test::nodes_below(data, clip);
  std::vector<int> targets = zeb_test::nodes_below(data, data.n);
  std::erase_if(targets, [&](int v) { return v == data.n || v == 0; });
  const auto pick = [&](const std::vector<int>& list) {
    return list[at(draw(g, 0, static_cast<int>(list.size()) - 1))];
  };
  const int target = pick(targets);
  const int root_at = pick(subtree);
  const join_side from = root_at == clip ? own : join_side{join_end::branch, root_at};
  const join_side to{join_end::branch, target};
  const word* const clip_words = packed_words(data, from);
  ASSERT_NO_FATAL_FAILURE(check_bounds(data, clip_words, packed_words(data, to)));
  const double cost = join_cost(data, from, to, unbounded);
  ASSERT_NO_FATAL_FAILURE(check_scan(data, clip_words, targets, cost));
  ASSERT_NO_FATAL_FAILURE(check_scan(data, clip_words, targets, home_cost + rounding));
  const double exact = exact_score(data, from, to);
  ASSERT_EQ(total_fit(data), apart);
  ASSERT_NEAR(exact, apart + cost, rounding);

  add_attachment_steps(data, from, to);
  ASSERT_EQ(total_fit(data), exact);
  const std::vector<double> step_cost(data.step_cost.begin(), data.step_cost.end());
  const std::vector<word> coarse(data.coarse_costs.begin(), data.coarse_costs.end());
  if (root_at != clip) reroot_subtree(data, root_at, clip);
  attach(data.tree, clip, joint, target);
  repair_after_insert(data, clip);
  ASSERT_EQ(full_pass(data), exact);
  ASSERT_TRUE(std::equal(step_cost.begin(), step_cost.end(), data.step_cost.begin()));
  ASSERT_TRUE(std::equal(coarse.begin(), coarse.end(), data.coarse_costs.begin()));
  ASSERT_NEAR(exact, oracle_fit(oracle, data, data.tree.anc), rounding);
}

/// Counts of a clipped tree and its clip, made by passes over both.
void check_two_passes(search_data& data, std::mt19937& g) {
  const int clip = zeb_test::draw_clip(data, g);
  const int sister = data.tree.sister[at(clip)];
  const int joint = detach(data.tree, clip);
  repair_after_clip(data, sister, clip);
  remove_home_steps(data, {join_end::root, clip}, {join_end::branch, sister});
  const double apart = total_fit(data);
  full_pass(data);
  subtree_pass(data, clip);
  ASSERT_EQ(total_fit(data), apart);
  attach(data.tree, clip, joint, sister);
  full_pass(data);
}

weighted_data random_data(std::mt19937& g, int most_taxa, int most_characters, bool plain) {
  const zeb_test::data_shape shape = zeb_test::random_shape(g, most_taxa, most_characters);
  weighting = {};
  weighting.on = weighting.data_allow = true;
  weighted_data oracle{zeb_test::fill_matrix(shape, g), {}};
  for (character_record& record : matrix.characters)
    record.internal_steps = chance(g, 0.2) ? draw(g, 1, 5) : 0;
  if (chance(g, 0.2)) matrix.outgroup = draw(g, 0, shape.ntax - 1);
  if (chance(g, 0.2))
    for (int t = 0; t < shape.ntax; ++t)
      if (t != matrix.outgroup && active_taxa() > 4 && chance(g, 0.3))
        matrix.taxon_active[at(t)] = 0;
  engine.long_words = chance(g, 0.5);
  const zeb_test::random_weights weights = zeb_test::draw_weights(oracle.cells, true, g);
  oracle.how = weights.how;
  std::string commands = weights.commands;
  if (plain) {
    oracle.how.user_costs.clear();
    oracle.how.extended = false;
    commands = "piwe=" + std::to_string(oracle.how.k) + ";";
  }
  const std::string said = zeb_test::run_program(commands);
  EXPECT_EQ(said.find("rror"), std::string::npos) << commands << said;
  return oracle;
}

void check_data(std::mt19937& g, int most_taxa, int most_characters, int trees) {
  const weighted_data oracle = random_data(g, most_taxa, most_characters, false);
  std::optional<zeb_test::plain_wide_kind> wide;
  if (chance(g, 0.3)) wide.emplace(0.25 * draw(g, 1, 4), g);
  search_data& data = packed_matrix(true);
  for (int i = 0; i < trees; ++i) {
    const naive::rooted_tree tree = naive::random_tree(data.n, g);
    std::vector<std::int32_t> anc(tree.parent.begin(), tree.parent.end());
    anc[at(data.n)] = data.nodes;
    double score = -1;
    for (const int bits : {32, 64, 256, 512}) {
      if (bits > widest_kernels()) continue;
      data.kernels = kernels_of_width(bits, mode_of(data));
      end_undo(data);
      const double found = tree_length(data, anc);
      if (score >= 0) {
        ASSERT_EQ(found, score) << bits << " bits";
      }
      score = found;
      ASSERT_NEAR(score, oracle_fit(oracle, data, anc), 1e-9) << bits << " bits";
      if (data.n < 4) continue;
      ASSERT_NO_FATAL_FAILURE(check_two_passes(data, g));
      ASSERT_NO_FATAL_FAILURE(check_move(data, oracle, g));
    }
  }
}

TEST_F(implied_weighting, fits_and_costs_agree_with_the_oracle) {
  const bool slow = std::getenv("ZEB_SLOW_TESTS") != nullptr;
  for (unsigned seed = 1; seed <= (slow ? 30000U : 1000U); ++seed) {
    std::mt19937 g(seed);
    ASSERT_NO_FATAL_FAILURE(check_data(g, 14, 20, 2)) << "seed " << seed;
  }
  for (unsigned seed = 1; seed <= 6; ++seed) {
    std::mt19937 g(seed);
    ASSERT_NO_FATAL_FAILURE(check_data(g, 90, 400, 1)) << "seed " << seed;
  }
}

TEST_F(implied_weighting, follows_changed_weights_and_concavities) {
  std::mt19937 g(3);
  for (int round = 0; round < 50; ++round) {
    weighted_data oracle = random_data(g, 12, 12, true);
    search_data& data = packed_matrix(true);
    const naive::rooted_tree tree = naive::random_tree(data.n, g);
    std::vector<std::int32_t> anc(tree.parent.begin(), tree.parent.end());
    anc[at(data.n)] = data.nodes;
    const double before = tree_length(data, anc);
    // As a perturbed search does: the weights of fields, of all that there are.
    for (auto& group : data.fields)
      for (field_record& f : group) f.weight *= 2;
    weights_changed(data);
    const double constant = data.base_fit;
    double fieldless = 0;
    for (std::size_t i = 0; i < data.entries.size(); ++i)
      if (data.entries[i].fields == 0)
        fieldless += data.counters[i].weight * data.counters[i].fit[data.counters[i].steps];
    ASSERT_NEAR(tree_length(data, anc), 2 * before - constant - fieldless, 1e-9);
    weighting.concavity *= 2;
    oracle.how.k *= 2;
    packed_matrix(true);
    ASSERT_NEAR(tree_length(data, anc), oracle_fit(oracle, data, anc), 1e-9);
  }
}

}  // namespace
}  // namespace zeb
