// How far trees are from each other, and from their neighbours.
#include <algorithm>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/random.h"
#include "distances/distortion.h"
#include "distances/matching/stored_matching.h"
#include "distances/moves/spr_distance.h"
#include "distances/paced_progress.h"
#include "distances/shared_splits.h"
#include "distances/tcomp_request.h"
#include "distances/tree_pair.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "functions/tree_arguments.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "supports/bremer_trees.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

tree_pair bracketed_pair() {
  open_brackets();
  const int first = tree_argument();
  const int second = tree_argument();
  close_brackets();
  return pair_of(first, second, taxon_set(matrix.ntax));
}

/// Groups in only one of the trees, as a share of the groups of both (Robinson and Foulds 1981).
double robinson_foulds(const tree_pair& pair, bool unrooted) {
  const int n = pair.taxa.count();
  const auto a = split_keys(pair.cut(pair.first).ancestors, n, unrooted);
  const auto b = split_keys(pair.cut(pair.second).ancestors, n, unrooted);
  const auto all = static_cast<double>(a.size() + b.size());
  return all > 0 ? (all - 2 * keys_in_both(a, b)) / all : 0;
}

/// Of two trees in brackets, or of what `tcomp` takes.
double requested_robinson_foulds() {
  if (skip_blanks_peek() == '[') return robinson_foulds(bracketed_pair(), false);
  const compared_trees_request trees = read_tcomp_request().trees;
  if (trees.count() != 2) error_end("Expression \"rfdist\" compares two trees");
  return robinson_foulds(pair_of(trees), trees.unrooted);
}

double unrooted_robinson_foulds() { return robinson_foulds(bracketed_pair(), true); }

double distortion() {
  const tree_pair pair = bracketed_pair();
  return distortion_coefficient(pair.cut(pair.first), pair.cut(pair.second));
}

int fewest_moves(const tree_pair& pair) {
  random_generator generator;
  seed_generator(generator);
  paced_progress progress("SPR moves");
  return count_spr_moves(pair.cut(pair.first), pair.cut(pair.second), false, {}, generator,
                         [&] { progress.poll(0, 1); })
      .at_most;
}

double spr_moves() { return fewest_moves(bracketed_pair()); }

double similarity_by_moves() {
  const tree_pair pair = bracketed_pair();
  return spr_similarity(fewest_moves(pair), pair.taxa.count(), false);
}

double cost_of_move() {
  open_brackets();
  const tree_and_node t = tree_then_node();
  const int target = node_argument(t.number);
  close_brackets();
  std::vector<tree_node> moved(t.tree.begin(), t.tree.end());
  if (!move_clade(moved, matrix.ntax, t.node, target, false))
    error_end_f("Node %i can't move to node %i", t.node, target);
  tree_comparer comparer;
  return comparer.score(moved) - comparer.score(t.tree);
}

double matching_taxa() {
  open_brackets();
  const const_tree_span first = stored_tree(tree_argument());
  const const_tree_span second = stored_tree(tree_argument());
  close_brackets();
  paced_progress progress("Matching taxa");
  return write_nodes(
      "Match list",
      match_stored_trees(first, second, matrix.ntax, taxon_set(matrix.ntax), {}, [&](double done) {
        progress.poll(done, 1);
      }).partner);
}

// clang-format off
constexpr expression_function rows[] = {
    {"cutswap", "[T N1 N2]", "cutoff of swapping at which clade N1 of tree T may move to the branch below node N2: how much worse the tree gets (below 0: better)", cost_of_move},
    {"discoeff", "[T1 T2]", "distortion coefficient of the trees: of the steps beyond one that groups of T1, as characters, would take on a bush, the share that tree T2 spares them; 1 if it has all the groups", distortion, function_list::general, "deslist"},
    {"matchtax", "[T1 T2]", "list of matching taxa: for each taxon that of tree T2 which stands for it, as told by matchtax; -1 for none", matching_taxa},
    {"sprdiff", "[T1 T2]", "number of SPR moves between the trees, the fewest found (see sprdiff)", spr_moves},
    {"sprsim", "[T1 T2]", "similarity by SPR moves: 1 less their number as a share of the most there can be, the number of taxa less 2", similarity_by_moves},
    {"rfdist", "[T1 T2]", "normalised Robinson-Foulds distance of the trees; without brackets, trees and options as for tcomp, up to \";\"", requested_robinson_foulds},
    {"rfdistp", "[T1 T2]", "normalised Robinson-Foulds distance of the trees without their roots", unrooted_robinson_foulds, function_list::unlisted},
};
// clang-format on

}  // namespace

const std::span<const expression_function> distance_functions = rows;

}  // namespace zeb
