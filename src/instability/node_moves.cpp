#include "instability/node_moves.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/scores.h"
#include "console/progress.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "matrix/matrix.h"
#include "search/moves/lost_branches.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"

namespace zeb {
namespace {

/// For each node of the tree in work that of the stored tree with the same active taxa, for the
/// root its root; -1 for those that stand within a polytomy.
std::vector<int> stored_nodes(const search_data& data, std::span<const std::int32_t> anc,
                              const_tree_span tree) {
  const group_sums sums(data);
  std::unordered_map<std::uint64_t, int> node_of;
  const std::vector<std::uint64_t> of_stored = sums.of_stored(tree);
  for (int v = matrix.ntax; v < node_limit(tree, matrix.ntax); ++v)
    if (of_stored[at(v)] != 0) node_of.try_emplace(of_stored[at(v)], v);
  std::vector<int> out(at(data.nodes), -1);
  const std::vector<std::uint64_t> of_internal = sums.of_internal(anc);
  for (int v = 0; v < data.nodes; ++v) {
    const auto found = node_of.find(of_internal[at(v)]);
    if (v < data.n)
      out[at(v)] = data.pack_to_taxon[at(v)];
    else if (found != node_of.end())
      out[at(v)] = found->second;
  }
  // Polytomies end here at the latest: no other node needs be above the one that the outgroup is
  // in.
  out[at(data.n)] = matrix.ntax;
  return out;
}

class move_recorder {
 public:
  move_recorder(search_context& context, const_tree_span tree, std::vector<int> stored)
      : context_(context), stored_(std::move(stored)), path_(context.data), moves_(tree.size()) {}

  void meet(const met_move& move) {
    int distance = 0;
    for (const std::int32_t v : path_.of(move))
      if (v >= context_.data.n && stored_[at(v)] >= 0) ++distance;
    if (distance == 0) return;
    const double excess = move.score - move.tree_score;
    add(move.clip, move.target, distance, excess);
    // The exchange of two branches is met from one of them only.
    const bool is_exchange =
        move.root == move.home_root && context_.data.tree.anc[at(move.target)] == move.sister;
    if (is_exchange) add(move.target, move.clip, distance, excess);
  }

  void show_progress_of(int clips) {
    show_progress("Moving nodes", clips, context_.data.nodes);
    poll_search(context_);
  }

  std::vector<std::vector<node_move>> take_moves() { return std::move(moves_); }

 private:
  void add(int clip, int target, int distance, double excess) {
    const int node = stored_[at(clip)];
    if (node < 0) return;
    const bool to_polytomy = stored_[at(target)] < 0;
    while (stored_[at(target)] < 0) target = context_.data.tree.anc[at(target)];
    if (std::abs(excess) < score_tolerance) excess = 0;
    for (node_move& one : moves_[at(node)]) {
      if (one.target != stored_[at(target)] || one.to_polytomy != to_polytomy) continue;
      one.distance = std::min(one.distance, distance);
      one.excess = std::min(one.excess, excess);
      return;
    }
    moves_[at(node)].push_back({stored_[at(target)], to_polytomy, distance, excess});
  }

  search_context& context_;
  std::vector<int> stored_;  // by node of the tree in work
  lost_branches path_;
  std::vector<std::vector<node_move>> moves_;  // by node of the stored tree
};

search_rules rules_for(const move_search& how) {
  search_rules rules = rules_in_force();
  rules.swap.move_limit = 0;
  rules.swap.random_clip = false;
  rules.suboptimal = how.limit;
  rules.relative_suboptimal = 0;
  rules.collapse = {};  // moves across branches without length are moves
  rules.collapse.quick = false;
  return rules;
}

}  // namespace

std::vector<std::vector<node_move>> moves_of_nodes(const_tree_span tree, const move_search& how) {
  search_data& data = packed_matrix(false);
  const arena_scope memory;
  tree_slots nowhere;
  context_scope scope(data, nowhere, rules_for(how), random_generator());
  std::vector<std::int32_t> anc(at(data.nodes));
  if (!to_internal(data, tree, anc, true)) error_end("The trees must have all active taxa");
  move_recorder recorder(scope.context(), tree, stored_nodes(data, anc, tree));
  const move_enumeration enumeration = {
      [](void* receiver, const met_move& move) {
        static_cast<move_recorder*>(receiver)->meet(move);
      },
      &recorder,
      {},
      [](void* receiver, int done) {
        static_cast<move_recorder*>(receiver)->show_progress_of(done);
      }};
  const swapper swap = how.tbr ? tbr_swap : spr_swap;
  swap(scope.context(), anc, {.enumeration = &enumeration});
  clear_progress();
  return recorder.take_moves();
}

}  // namespace zeb
