// Bremer supports, absolute and relative, against all trees of a few taxa and against all trees one
// TBR move away.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>

#include "base/arena.h"
#include "engine/fit/weighting_settings.h"
#include "matrix/character_steps.h"
#include "matrix/matrix_layout.h"
#include "property/random_matrix.h"
#include "search/search_settings.h"
#include "support/all_trees.h"
#include "support/consensus_oracle.h"
#include "support/neighbour_trees.h"
#include "support/program.h"
#include "supports/requested_supports.h"
#include "trees/constraints/constraints.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;
using group = zeb_test::taxon_set;

class bremer : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    zeb_test::start_program();
    create_arena(std::size_t{1} << 27);
  }
  static void TearDownTestSuite() {
    set_suboptimal(0, 0);
    weighting = {};
    wipe_matrix();
  }
};

/// A tree as the oracle sees it.
struct known_tree {
  std::vector<std::int32_t> record;
  std::set<group> groups;  // without the taxa cut off
  std::vector<double> costs;
  double score = 0;
};

/// Data, and what trees cost.
class oracle {
 public:
  explicit oracle(std::mt19937& g) {
    zeb_test::data_shape shape = zeb_test::random_shape(g, 7, 12);
    shape.ntax = draw(g, 5, 7);
    shape.states = draw(g, 2, 4);
    data_ = zeb_test::fill_matrix(shape, g);
    weighting.on = chance(g, 0.4);
    set_maxtrees(1000, false);
    cut_off_.assign(at(shape.ntax), 0);
    if (chance(g, 0.4)) cut_off_[at(draw(g, 1, shape.ntax - 1))] = 1;
  }
  int taxa() const { return static_cast<int>(cut_off_.size()); }
  const std::vector<std::uint8_t>& cut_off() const { return cut_off_; }

  std::set<group> groups_of(const std::vector<std::int32_t>& record) const {
    std::set<group> groups;
    for (const auto& [node, set] : zeb_test::node_groups(record, taxa(), excluded()))
      if (set.size() > 1) groups.insert(set);
    return groups;
  }
  known_tree know(const naive::rooted_tree& tree) const {
    known_tree known;
    known.record.assign(tree.parent.begin(), tree.parent.end());
    known.record[at(taxa())] = 2 * taxa() - 1;
    normalise_tree(known.record, taxa());
    known.groups = groups_of(known.record);
    for (std::size_t c = 0; c < data_.cells.size(); ++c) {
      const auto steps =
          static_cast<double>(naive::least_steps(tree, data_.cells[c], data_.additive[c]));
      const double extra = steps - minimum_steps(static_cast<int>(c));
      known.costs.push_back(data_.weight[c] *
                            (weighting.on ? extra / (weighting.concavity + extra) : steps));
      known.score += known.costs.back();
    }
    return known;
  }
  group excluded() const {
    group out;
    for (int t = 0; t < taxa(); ++t)
      if (cut_off_[at(t)]) out.insert(t);
    return out;
  }

 private:
  zeb_test::oracle_matrix data_;
  std::vector<std::uint8_t> cut_off_;
};

double relative_difference(const known_tree& a, const known_tree& b) {
  double for_a = 0;
  double for_b = 0;
  for (std::size_t c = 0; c < a.costs.size(); ++c) {
    for_a += std::max(0.0, b.costs[c] - a.costs[c]);
    for_b += std::max(0.0, a.costs[c] - b.costs[c]);
  }
  return for_a > 1e-9 ? (for_a - for_b) / for_a : 0;
}

/// The least that a tree of those within the limits costs without the group, in the units shown.
double least_loss(const known_tree& reference, const std::vector<known_tree>& others,
                  const group& lost, int measure, double limit, double relative_limit) {
  double absolute = no_bound;
  for (const known_tree& other : others)
    if (!other.groups.contains(lost)) absolute = std::min(absolute, other.score - reference.score);
  if (absolute > limit + 1e-9) absolute = no_bound;
  if (measure == bremer_settings::absolute) return absolute == no_bound ? limit : absolute;
  if (absolute == no_bound) return 100 * relative_limit;
  const double allowed = measure == bremer_settings::relative ? limit : absolute;
  double relative = relative_limit;
  for (const known_tree& other : others)
    if (!other.groups.contains(lost) && other.score - reference.score <= allowed + 1e-9)
      relative = std::min(relative, relative_difference(reference, other));
  return 100 * relative;
}

void store_trees(const std::vector<known_tree>& trees) {
  set_tree_count(store, 0);
  for (const known_tree& known : trees) std::ranges::copy(known.record, take_slot().begin());
}

void check(const oracle& truth, const known_tree& reference, const std::vector<known_tree>& others,
           bremer_request request, double limit, double relative_limit) {
  request.excluded = truth.cut_off();
  request.n_trees = store.ntrees;
  request.trees.assign(at(store.ntrees), 1);
  request.how.collapse_none = true;
  for (const int measure :
       {bremer_settings::absolute, bremer_settings::relative, bremer_settings::relative_within}) {
    request.how.measure = measure;
    const bremer_result result = requested_supports(request);
    EXPECT_EQ(truth.groups_of(result.tree), reference.groups);
    for (const auto& [node, set] :
         zeb_test::node_groups(result.tree, truth.taxa(), truth.excluded())) {
      if (std::isnan(result.values[at(node)])) continue;
      const double least = least_loss(reference, others, set, measure, limit, relative_limit);
      ASSERT_NEAR(result.values[at(node)], least, 1e-6)
          << "measure " << measure << " node " << node;
    }
  }
}

void check_complete_set(std::mt19937& g) {
  const oracle truth(g);
  std::vector<known_tree> all;
  naive::for_each_tree(truth.taxa(),
                       [&](const naive::rooted_tree& tree) { all.push_back(truth.know(tree)); });
  std::ranges::shuffle(all, g);
  known_tree reference = all[0];
  double worst = 0;
  for (const known_tree& tree : all)
    if (tree.score < reference.score - 1e-9) reference = tree;
  double worst_relative = 0;
  for (const known_tree& tree : all) {
    worst = std::max(worst, tree.score - reference.score);
    worst_relative = std::max(worst_relative, relative_difference(reference, tree));
  }
  store_trees(all);
  check(truth, reference, all, {}, worst, worst_relative);
}

void check_neighbourhood(std::mt19937& g) {
  const oracle truth(g);
  const naive::rooted_tree start = naive::random_tree(truth.taxa(), g);
  const known_tree reference = truth.know(start);
  std::vector<known_tree> around;
  naive::for_each_neighbour(
      start, true, {}, [&](const naive::rooted_tree& tree) { around.push_back(truth.know(tree)); });
  store_trees({reference});
  // No sum of weights or fits comes to these.
  const double limit = 0.01234 + draw(g, 0, 8) * (weighting.on ? 0.1 : 1);
  const double relative_limit = 0.35123 + 0.1 * draw(g, 0, 6);
  set_suboptimal(limit, relative_limit);
  bremer_request request;
  request.how.source = bremer_settings::by_swapping;
  check(truth, reference, around, request, limit, relative_limit);
}

/// By the exact search for each group of any tree, better ones being found as well.
void check_searches(std::mt19937& g) {
  const oracle truth(g);
  std::vector<known_tree> all;
  naive::for_each_tree(truth.taxa(),
                       [&](const naive::rooted_tree& tree) { all.push_back(truth.know(tree)); });
  const known_tree reference = all[at(draw(g, 0, static_cast<int>(all.size()) - 1))];
  store_trees({reference});
  bremer_request request;
  request.how.source = bremer_settings::by_searching;
  request.how.search = "ienum;";
  request.how.cut = -1e9;
  request.excluded = truth.cut_off();
  request.n_trees = 1;
  request.trees = {1};
  const bremer_result result = requested_supports(request);
  ASSERT_EQ(store.ntrees, 1);
  EXPECT_TRUE(std::ranges::equal(stored_tree(0), reference.record));
  EXPECT_FALSE(constraints.defined());
  for (const auto& [node, set] :
       zeb_test::node_groups(result.tree, truth.taxa(), truth.excluded())) {
    if (std::isnan(result.values[at(node)])) continue;
    const double least = least_loss(reference, all, set, bremer_settings::absolute, no_bound, 1);
    ASSERT_NEAR(result.values[at(node)], least, 1e-6) << "node " << node;
  }
}

TEST_F(bremer, supports_by_exact_searches_are_those_of_enumeration) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::mt19937 g(seed);
    ASSERT_NO_FATAL_FAILURE(check_searches(g)) << "seed " << seed;
  }
}

TEST_F(bremer, supports_from_complete_sets_are_those_of_enumeration) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    std::mt19937 g(seed);
    ASSERT_NO_FATAL_FAILURE(check_complete_set(g)) << "seed " << seed;
  }
}

TEST_F(bremer, supports_by_swapping_are_those_of_all_neighbours) {
  for (unsigned seed = 1; seed <= 120; ++seed) {
    std::mt19937 g(seed);
    ASSERT_NO_FATAL_FAILURE(check_neighbourhood(g)) << "seed " << seed;
  }
}

}  // namespace
}  // namespace zeb
