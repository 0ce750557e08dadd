// Every reconnection that the swappers cost, against the oracle's length of the tree it makes; and
// the tree in work after the swap, which must be as before.
#include <gtest/gtest.h>

#include <set>

#include "engine/collapsing/collapsing.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "matrix/matrix_layout.h"
#include "property/random_matrix.h"
#include "search/moves/swapper.h"
#include "search/search_session.h"
#include "search/search_settings.h"
#include "search/store/tree_identity.h"
#include "support/program.h"

namespace zeb {
namespace {

using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

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

}  // namespace
}  // namespace zeb
