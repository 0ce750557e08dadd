// Every reconnection that the swappers cost, against the oracle's length of the tree it makes; and
// the tree in work after the swap, which must be as before.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <set>

#include "base/indices.h"
#include "engine/collapsing/collapsing.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "matrix/matrix_layout.h"
#include "property/random_matrix.h"
#include "search/moves/swapper.h"
#include "search/search_session.h"
#include "search/search_settings.h"
#include "search/store/tree_identity.h"
#include "support/macro_session.h"
#include "support/program.h"
#include "trees/constraints/constraints.h"

namespace zeb {
namespace {

using zeb_test::draw;

/// Makes the tree of a move from the links of the clipped state, by plain edits of neighbour lists.
std::vector<std::int32_t> tree_of_move(const met_move& move) {
  const search_data& data = *move.data;
  const int nodes = data.nodes;
  std::vector<std::set<int>> next(at(nodes));
  auto join = [&](int a, int b) {
    next[at(a)].insert(b);
    next[at(b)].insert(a);
  };
  auto cut = [&](int a, int b) {
    next[at(a)].erase(b);
    next[at(b)].erase(a);
  };
  std::vector<int> reached;
  auto walk = [&](int top) {
    std::vector<int> stack = {top};
    while (!stack.empty()) {
      const int v = stack.back();
      stack.pop_back();
      reached.push_back(v);
      if (v < data.n) continue;
      for (const int d : {data.tree.first[at(v)], data.tree.second[at(v)]}) {
        join(v, d);
        stack.push_back(d);
      }
    }
  };
  walk(move.clip);
  if (move.sister != 0) walk(data.n);
  // The clip's root is a node on a branch of the subtree; take it out and put it on `root`.
  int root_side = move.clip;
  if (move.clip >= data.n) {
    const int a = data.tree.first[at(move.clip)];
    const int b = data.tree.second[at(move.clip)];
    cut(move.clip, a);
    cut(move.clip, b);
    join(a, b);
    int other = move.root == a ? b : move.root == b ? a : data.tree.anc[at(move.root)];
    cut(move.root, other);
    join(move.root, move.clip);
    join(other, move.clip);
  }
  std::vector<std::int32_t> anc(at(nodes), 0);
  if (move.sister == 0) {
    join(root_side, data.n);
    join(0, data.n);
  } else {
    int joint = data.n;
    std::set<int> used(reached.begin(), reached.end());
    for (int v = data.n; v < nodes; ++v)
      if (!used.contains(v)) joint = v;
    const int above = data.tree.anc[at(move.target)];
    cut(move.target, above);
    join(move.target, joint);
    join(above, joint);
    join(root_side, joint);
  }
  std::vector<int> stack = {data.n};
  std::vector<std::uint8_t> seen(at(nodes), 0);
  seen[at(data.n)] = 1;
  while (!stack.empty()) {
    const int v = stack.back();
    stack.pop_back();
    for (const int d : next[at(v)]) {
      if (seen[at(d)]) continue;
      seen[at(d)] = 1;
      anc[at(d)] = v;
      stack.push_back(d);
    }
  }
  anc[at(data.n)] = nodes;
  return anc;
}

std::set<std::uint64_t> groups_of(std::span<const std::int32_t> anc, int n) {
  std::vector<std::uint64_t> below(anc.size(), 0);
  for (int t = 1; t < n; ++t)
    for (int v = anc[at(t)]; v != n; v = anc[at(v)]) below[at(v)] |= std::uint64_t{1} << t;
  return {below.begin() + n + 1, below.end()};
}

struct met_moves {
  const zeb_test::oracle_matrix* oracle;
  std::set<std::vector<std::int32_t>> trees;
  int wrong = 0;
  int met = 0;
  std::set<std::uint64_t> kept = {};  // groups of the tree that all trees as good have
};

long oracle_length(const zeb_test::oracle_matrix& oracle, std::span<const std::int32_t> anc) {
  const search_data& data = packed_matrix(true);
  naive::rooted_tree tree{data.n, {anc.begin(), anc.end()}};
  tree.parent[at(data.n)] = -1;
  return oracle.length(tree, {data.pack_to_taxon.begin(), data.pack_to_taxon.begin() + data.n});
}

void check_move(void* receiver, const met_move& move) {
  auto& moves = *static_cast<met_moves*>(receiver);
  std::vector<std::int32_t> anc = tree_of_move(move);
  ++moves.met;
  if (oracle_length(*moves.oracle, anc) != static_cast<long>(move.score)) ++moves.wrong;
  std::vector<std::int32_t> scratch(anc.size() * 2);
  canonical_form(anc, move.data->n, {}, scratch);
  moves.trees.insert(anc);
  if (move.score > move.tree_score) return;
  const std::set<std::uint64_t> groups = groups_of(anc, move.data->n);
  std::erase_if(moves.kept, [&](std::uint64_t group) { return !groups.contains(group); });
}

std::vector<std::int32_t> internal_form(const naive::rooted_tree& tree) {
  std::vector<std::int32_t> anc(tree.parent.begin(), tree.parent.end());
  anc[at(tree.terminals)] = 2 * tree.terminals - 1;
  return anc;
}

/// Groups that the collapsing rule leaves of a tree, which is put into the buffer for that.
std::set<std::uint64_t> groups_after_collapsing(std::span<const std::int32_t> anc, int rule) {
  const search_data& data = packed_matrix(true);
  std::vector<std::int32_t> record(at(matrix.nnodes), 0);
  to_buffer(data, anc, record);
  std::vector<std::uint8_t> marks(at(matrix.nnodes), 2);
  collapsing.rule = rule;
  collapse_tree(record, marks);
  collapsing.rule = 0;
  std::vector<std::uint64_t> below(record.size(), 0);
  for (int t = 0; t < matrix.ntax; ++t) {
    const int terminal = data.taxon_to_pack[at(t)];
    for (int v = record[at(t)]; v != matrix.ntax; v = record[at(v)])
      if (terminal != 0) below[at(v)] |= std::uint64_t{1} << terminal;
  }
  std::set<std::uint64_t> groups;
  for (int v = matrix.ntax + 1; v < record[at(matrix.ntax)]; ++v)
    if (marks[at(v)]) groups.insert(below[at(v)]);
  return groups;
}

class swap_candidates : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::start_program(); }
  static void TearDownTestSuite() { wipe_matrix(); }
};

TEST_F(swap_candidates, scores_are_those_of_the_trees) {
  std::mt19937 g(5);
  for (int round = 0; round < 80; ++round) {
    const zeb_test::oracle_matrix oracle = fill_matrix(zeb_test::random_shape(g, 10, 24), g);
    swapping = {};
    swapping.cluster_size = draw(g, 3, 15);
    search_session session;
    search_context& context = session.context();
    const search_data& data = context.data;
    std::vector<std::int32_t> tree = internal_form(naive::random_tree(data.n, g));
    const std::vector<std::int32_t> before = tree;
    context.rules.suboptimal = 1e6;
    for (const swapper swap : {tbr_swap, spr_swap}) {
      met_moves moves{&oracle, {}};
      moves.kept = groups_of(tree, data.n);
      const move_enumeration enumeration{check_move, &moves, {}};
      const double score = swap(context, tree, {.enumeration = &enumeration});
      EXPECT_EQ(moves.wrong, 0) << "round " << round << " of " << moves.met;
      EXPECT_EQ(static_cast<long>(score), oracle_length(oracle, before)) << "round " << round;
      EXPECT_EQ(tree, before);
      EXPECT_EQ(groups_after_collapsing(tree, swap == tbr_swap ? 6 : 5), moves.kept)
          << "round " << round;
    }
  }
}

/// A random group that may be refused or not; members and others are bits.
struct random_group {
  std::uint64_t members = 0;
  std::uint64_t others = 0;
  bool positive = true;
};

/// Constraints of which this tree fulfils the most: groups of it (positive) and of others, with
/// floating taxa. A tree that breaks some comes out now and then.
std::vector<random_group> random_constraints(std::span<const std::int32_t> anc, int n,
                                             std::mt19937& g) {
  const std::set<std::uint64_t> own = groups_of(anc, n);
  const std::vector<std::uint64_t> groups(own.begin(), own.end());
  std::vector<random_group> result;
  constraint_definitions definitions;
  const int count = draw(g, 1, 6);
  for (int i = 0; i < count; ++i) {
    random_group group;
    group.positive = zeb_test::chance(g, 0.6);
    const bool from_tree = group.positive != zeb_test::chance(g, 0.1);
    const std::uint64_t drawn = g() & ((std::uint64_t{1} << n) - 1);
    const std::uint64_t base =
        from_tree ? groups[at(draw(g, 0, static_cast<int>(groups.size()) - 1))] : drawn;
    const std::uint64_t floating =
        zeb_test::chance(g, 0.5) ? g() & g() & ((std::uint64_t{1} << n) - 1) : 0;
    group.members = base & ~floating;
    group.others = ~base & ~floating & ((std::uint64_t{1} << n) - 1);
    constraint_group defined{taxon_set(matrix.ntax), taxon_set(matrix.ntax)};
    const search_data& data = packed_matrix(true);
    for (int t = 0; t < n; ++t) {
      if (group.members >> t & 1) defined.members.insert(data.pack_to_taxon[at(t)]);
      if (floating >> t & 1) defined.floating.insert(data.pack_to_taxon[at(t)]);
    }
    (group.positive ? definitions.positive : definitions.negative).push_back(defined);
    result.push_back(group);
  }
  define_constraints(definitions, true);
  return result;
}

bool fulfils(std::span<const std::int32_t> anc, int n, const std::vector<random_group>& wanted) {
  const std::set<std::uint64_t> groups = groups_of(anc, n);
  return std::all_of(wanted.begin(), wanted.end(), [&](const random_group& c) {
    if (std::popcount(c.members) < 2 || std::popcount(c.others) < 2) return true;
    const bool there = std::any_of(groups.begin(), groups.end(), [&](std::uint64_t group) {
      return ((group & c.others) == 0 && (c.members & ~group) == 0) ||
             ((group & c.members) == 0 && (c.others & ~group) == 0);
    });
    return there == c.positive;
  });
}

TEST_F(swap_candidates, under_constraints_all_and_only_trees_that_fulfil_them_are_met) {
  std::mt19937 g(9);
  int clipped = 0;
  for (int round = 0; round < 160; ++round) {
    zeb_test::data_shape shape = zeb_test::random_shape(g, 12, 6);
    shape.ntax = round % 40 == 0 ? 18 : draw(g, 5, 12);  // larger ones are searched by clusters
    const zeb_test::oracle_matrix oracle = fill_matrix(shape, g);
    swapping = {};
    swapping.cluster_size = draw(g, 3, 15);
    if (round % 5 == 0) swapping.move_limit = 100;
    std::vector<std::int32_t> tree = internal_form(naive::random_tree(shape.ntax, g));
    const auto constraints_of_round = random_constraints(tree, shape.ntax, g);
    std::set<std::vector<std::int32_t>> met[2];
    for (const swapper swap : {tbr_swap, spr_swap}) {
      for (const bool constrained : {false, true}) {
        activate_constraints(constrained);
        search_data& data = packed_matrix(true);
        met[constrained].clear();
        const std::string refusal = zeb_test::error_of([&] {
          tree_slots nowhere;
          context_scope scope(data, nowhere, rules_in_force(), random_generator());
          scope.context().rules.suboptimal = 1e6;
          met_moves moves{&oracle, {}};
          const move_enumeration enumeration{check_move, &moves, {}};
          swap(scope.context(), tree, {.enumeration = &enumeration});
          met[constrained] = moves.trees;
        });
        if (!refusal.empty()) met[false].clear();  // groups that contradict each other
      }
      std::erase_if(met[false], [&](const std::vector<std::int32_t>& other) {
        return !fulfils(other, shape.ntax, constraints_of_round);
      });
      clipped += static_cast<int>(met[false].size());
      std::vector<std::int32_t> scratch(tree.size() * 2);
      std::vector<std::int32_t> own = tree;
      canonical_form(own, shape.ntax, {}, scratch);
      met[false].erase(own);
      met[true].erase(own);
      EXPECT_EQ(met[true], met[false]) << "round " << round;
    }
  }
  EXPECT_GT(clipped, 1000);
  forget_constraints();
}

}  // namespace
}  // namespace zeb
