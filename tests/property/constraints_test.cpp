// Constraints against sets of taxa: stored trees with polytomies and absent taxa, and searches of
// few taxa against all trees there are.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <vector>

#include "matrix/matrix_layout.h"
#include "property/random_matrix.h"
#include "search/drivers/bbreak.h"
#include "search/drivers/mult.h"
#include "search/search_session.h"
#include "support/all_trees.h"
#include "support/macro_session.h"
#include "support/program.h"
#include "support/random_trees.h"
#include "support/reconstructions.h"
#include "trees/constraints/constraint_test.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using zeb_test::chance;
using zeb_test::draw;
using taxa = std::uint32_t;  // a bit for each

struct group {
  taxa members;
  taxa floating;
};

struct random_constraints {
  std::vector<group> of_tree, positive, negative;
  bool has_tree = false;
};

taxa random_taxa(std::mt19937& g, taxa of) { return static_cast<taxa>(g()) & of; }

constraint_group defined(const group& one, int ntax) {
  constraint_group result{taxon_set(ntax), taxon_set(ntax)};
  for (int t = 0; t < ntax; ++t) {
    result.members.assign(t, (one.members >> t & 1) != 0);
    result.floating.assign(t, (one.floating >> t & 1) != 0);
  }
  return result;
}

/// Draws constraints, defines them, and switches them on.
random_constraints draw_constraints(std::mt19937& g, int ntax) {
  const taxa all = (taxa{1} << ntax) - 1;
  random_constraints drawn;
  constraint_definitions definitions;
  drawn.has_tree = chance(g, 0.4);
  if (drawn.has_tree) {
    definitions.tree = zeb_test::random_tree(ntax, g, 0.5, 0.2);
    normalise_tree(definitions.tree, ntax);
    for (const constraint_group& one : groups_of_tree(definitions.tree, ntax)) {
      group of_tree{0, 0};
      for (const int t : one.members) of_tree.members |= taxa{1} << t;
      for (const int t : one.floating) of_tree.floating |= taxa{1} << t;
      drawn.of_tree.push_back(of_tree);
    }
  }
  for (auto* groups : {&drawn.positive, &drawn.negative}) {
    for (int count = draw(g, 0, 2); count > 0; --count) {
      const taxa floating = chance(g, 0.5) ? random_taxa(g, all) & random_taxa(g, all) : 0;
      groups->push_back({random_taxa(g, all) & ~floating, floating});
    }
  }
  for (const group& one : drawn.positive) definitions.positive.push_back(defined(one, ntax));
  for (const group& one : drawn.negative) definitions.negative.push_back(defined(one, ntax));
  define_constraints(definitions, definitions.defined());
  return drawn;
}

/// Fulfilled and violated, by the terminals above each branch and those of the whole tree.
constraint_test::verdict judged(const random_constraints& drawn, const std::vector<taxa>& branches,
                                taxa present) {
  enum { fulfilled, violated, trivial };
  const auto state = [&](const group& one, bool positive) {
    const taxa members = one.members & present;
    const taxa others = present & ~one.members & ~one.floating;
    if (std::popcount(members) < 2 || std::popcount(others) < 2)
      return positive ? fulfilled : trivial;
    const bool there = std::any_of(branches.begin(), branches.end(), [&](taxa branch) {
      return ((branch & others) == 0 && (members & ~branch) == 0) ||
             ((branch & members) == 0 && (others & ~branch) == 0);
    });
    return there == positive ? fulfilled : violated;
  };
  constraint_test::verdict verdict;
  const auto count = [&](int one) {
    verdict.fulfilled += one == fulfilled;
    verdict.violated += one == violated;
  };
  for (const group& one : drawn.positive) count(state(one, true));
  for (const group& one : drawn.negative) count(state(one, false));
  if (drawn.has_tree) {
    count(std::any_of(drawn.of_tree.begin(), drawn.of_tree.end(),
                      [&](const group& one) { return state(one, true) == violated; })
              ? violated
              : fulfilled);
  }
  return verdict;
}

class constraints_of_sets : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  static void TearDownTestSuite() { wipe_matrix(); }
};

TEST_F(constraints_of_sets, stored_trees_are_judged) {
  std::mt19937 g(17);
  for (int round = 0; round < 3000; ++round) {
    zeb_test::data_shape shape;
    shape.ntax = draw(g, 4, 12);
    shape.nchar = 1;
    if (round % 20 == 0) fill_matrix(shape, g);
    const int ntax = matrix.ntax;
    const random_constraints drawn = draw_constraints(g, ntax);
    std::vector<tree_node> tree = zeb_test::random_tree(ntax, g, 0.3, 0.2);
    normalise_tree(tree, ntax);
    std::vector<taxa> branches(tree.size(), 0);
    for (int t = 0; t < ntax; ++t) {
      if (is_absent(tree, t)) continue;
      for (int v = t; v != ntax; v = tree[at(v)]) branches[at(v)] |= taxa{1} << t;
      branches[at(ntax)] |= taxa{1} << t;
    }
    const taxa present = branches[at(ntax)];
    const constraint_test::verdict expected = judged(drawn, branches, present);
    const constraint_test::verdict found = constraint_test().judge(tree);
    EXPECT_EQ(found.fulfilled, expected.fulfilled) << "round " << round;
    EXPECT_EQ(found.violated, expected.violated) << "round " << round;
  }
}

TEST_F(constraints_of_sets, searches_find_all_best_trees_that_fulfil_them) {
  std::mt19937 g(18);
  for (int round = 0; round < 80; ++round) {
    zeb_test::data_shape shape = zeb_test::random_shape(g, 7, 12);
    shape.ntax = draw(g, 5, 7);
    const zeb_test::oracle_matrix oracle = fill_matrix(shape, g);
    set_maxtrees(1000, false);
    const random_constraints drawn = draw_constraints(g, shape.ntax);
    std::vector<int> rows(at(shape.ntax));
    for (int t = 0; t < shape.ntax; ++t) rows[at(t)] = t;
    long best = -1;
    int number = 0;
    naive::for_each_tree(shape.ntax, [&](const naive::rooted_tree& tree) {
      const std::vector<taxa> branches = naive::groups_below(tree);
      if (judged(drawn, branches, branches[at(shape.ntax)]).violated > 0) return;
      const long length = oracle.length(tree, rows);
      if (best < 0 || length < best) number = 0;
      if (number == 0) best = length;
      number += length == best;
    });
    std::pair<long, int> found(-1, 0);
    const std::string refusal = zeb_test::error_of([&] {
      set_tree_count(store, 0);
      search_session session;
      session.context().random.seed(static_cast<unsigned>(round + 1));
      mult_settings options;
      options.replications = 60;
      options.hold = 20;
      mult_search(session.context(), options);
      found.first = static_cast<long>(swap_stored_trees(session.context(), true).best);
      found.second = store.ntrees;
    });
    if (refusal.find("contradictory") != std::string::npos ||
        refusal.find("identical") != std::string::npos ||
        refusal.find("incompatible") != std::string::npos) {
      continue;
    }
    EXPECT_EQ(found.first, best) << "round " << round << refusal;
    EXPECT_EQ(found.second, number) << "round " << round;
  }
  forget_constraints();
}

}  // namespace
}  // namespace zeb
