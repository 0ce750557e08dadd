// One swap of one tree, from its first full pass to its last: what SPR, TBR and the limited swap
// share. Private to the swapper's files.
//
// Between clips the node sets are exact for the whole tree and the cluster unions cover them;
// within a clip the sets of both halves are as if the halves were separate trees.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "base/arena.h"
#include "base/indices.h"
#include "engine/search_data.h"
#include "search/moves/candidate_judge.h"
#include "search/moves/clusters.h"
#include "search/moves/move_slots.h"
#include "search/moves/narrow_clusters.h"
#include "search/moves/perturbation.h"
#include "search/moves/swap_task.h"
#include "search/search_context.h"

namespace zeb {

/// A candidate at or under the bound, met where trees are stored.
struct swap_candidate {
  double score;         // of the whole tree with that move
  std::int32_t branch;  // target; -1 cancelled
};

/// However a swap ends, also where it fails while it begins, the data aren't in one any more.
struct end_of_swap {
  explicit end_of_swap(search_data& its_data) : data(its_data) {}
  ~end_of_swap();
  end_of_swap(const end_of_swap&) = delete;
  end_of_swap& operator=(const end_of_swap&) = delete;
  search_data& data;
};

struct swap_run {
  enum class swap_kind { tbr, spr, limited };

  swap_run(search_context& search, swap_kind kind_of_swap, std::span<std::int32_t> tree,
           const swap_task& task);
  swap_run(const swap_run&) = delete;
  swap_run& operator=(const swap_run&) = delete;

  // -- what is swapped --
  arena_scope memory;  // all spans below
  search_context& context;
  search_data& data;
  const end_of_swap at_end;
  const search_rules& rules;
  swap_kind kind;
  std::span<std::int32_t> anc;  // the caller's tree, written when the swap ends
  int first_slot;
  int multi;          // capacity of the slots for this search; 0: a single tree
  bool first_pass;    // quick: clips of 3 terminals and more, until the first improvement
  bool trees_wanted;  // candidates as good as the tree are stored or enumerated
  const bool stays;   // better trees are stored, and the tree in work isn't left for them
  const move_enumeration* enumeration;  // null: none
  perturbation* const perturbing;       // null: only better trees are accepted
  const swap_share* const share;        // null: every node is clipped
  const bool fits;          // implied weights: costs are fits, see the engine's counters
  const double rounding;    // scores closer than this are one
  const move_slots& slots;  // of the search
  search_constraints* const constraints_in_force;  // of the search; may be null
  const bool more_to_ask;  // there are wide characters, or something may forbid moves
  std::unique_ptr<candidate_judge> judge;  // null: kernels know all characters

  // -- progress through the clips --
  std::span<std::int32_t> clip_order;  // by position; empty: position and node are the same
  int position = 0;
  int counter = 1;  // clips since the last improvement
  int clips_to_report = 0;
  int report_every = 10;
  bool given_up = false;  // the better tree found is in the buffer already

  // -- scores --
  double score = 0;         // of the tree in work; with a better position found, of that
  double stored_score = 0;  // score when trees were last stored
  double swap_slack = 0;
  bool buffer_full = false;

  // -- the clip --
  int clip = -1;
  int joint = -1;  // internal node freed; -1: the clip is the whole ingroup
  int sister = -1;
  int home_root = -1;   // stands for the subtree's root branch
  int home_first = -1;  // the other descendant of the clip
  double home_cost = 0;
  double score_without = 0;     // score of the two halves, unjoined
  double best_here = 0;         // lowest cost of joining
  double bound = 0;             // slack + best_here
  std::int32_t step_bound = 0;  // the same for the kernels of steps
  int best_branch = -1;
  int best_root = -1;
  bool restart = false;  // the tree's own slot was overwritten: move at once and go on from it

  // -- workspace --
  cluster_cut cut;
  int moves_since_cut = 0;
  narrow_pair narrow;  // `inters`
  std::span<std::int32_t> main_clusters;
  std::span<std::int32_t> clip_clusters;
  int n_main_clusters = 0;
  int n_clip_clusters = 0;
  std::span<std::int32_t> touched;  // clusters whose lists differ from the base lists
  int n_touched = 0;
  std::span<std::int32_t> scan_list;  // SPR, limited, few open: candidate branches
  int n_open_main = 0;     // TBR: branches that constraints leave to the clip, where they are few
  int n_open_subtree = 0;  // the same of the subtree
  std::span<std::int32_t> depth;  // by node; made for each stored tree
  std::span<swap_candidate> move_list;
  int n_moves = 0;
  int chosen = -1;                    // entry of move_list that is better than the tree
  std::span<std::uint8_t> marks;      // branches that stay in the tree being swapped
  std::span<std::uint8_t> new_marks;  // the same for a candidate
  bool marks_known = false;
  std::span<std::int32_t> scratch;  // 2 * nodes

  // -- steps --
  /// Tells what a candidate within the bound is good for: notes it for the store, or makes it the
  /// best. True when nothing can do better.
  bool take_candidate(int u, int v, double cost);
  /// The same where the cost is that of all characters.
  bool take_judged(int u, int v, double cost);
  /// Are two scores of one tree the same, but for what rounding piles up in sums?
  bool agree(double a, double b) const;
  /// The end: final score and check; `anc` gets the tree.
  double finish();

  word* branch(int v) const { return data.branch_base + at(v) * data.set_stride; }
  /// What the clip is joined by when its branch `u` is, and what it meets on the branch `v`.
  join_side clip_side(int u) const {
    return clip < data.n ? join_side{join_end::root, clip} : join_side{join_end::branch, u};
  }
  join_side target_side(int v) const { return {v == 0 ? join_end::root : join_end::branch, v}; }
  /// The packed words of the same.
  const word* clip_words(int u) const {
    return clip < data.n ? data.sets[at(clip)].down : branch(u);
  }
  const word* target_words(int v) const { return v == 0 ? data.sets[0].down : branch(v); }
  /// First listed item from `from` on whose cost against `words` is within the bound, with that
  /// cost; `count` for none. Item i is at `base + items[i] * data.set_stride`.
  int scan(const word* words, const word* base, const std::int32_t* items, int from, int count,
           double* cost) const {
    if (fits)
      return data.kernels.fit.scan_pairs(words, base, data.set_stride, items, from, count,
                                         data.layout, bound, cost);
    std::int32_t steps = 0;
    const int i = data.kernels.scan_pairs(words, base, data.set_stride, items, from, count,
                                          data.layout, step_bound, &steps);
    *cost = steps;
    return i;
  }
  /// The same for clusters: `cost` is one from below.
  int scan_clusters(const word* words, const word* base, const std::int32_t* items, int from,
                    int count, double* cost) const {
    // Wide characters go on from what the packed ones of their sets cost.
    const bool need_costs = !fits || (data.has_wide && !data.fit_sets.empty());
    if (need_costs) return scan(words, base, items, from, count, cost);
    return data.kernels.fit.scan_bounds(words, base, data.set_stride, items, from, count,
                                        data.layout, bound, cost);
  }
  /// What the packed words don't know: adds the cost of wide characters. False if the move is over
  /// the bound then, or forbidden.
  bool others_allow(join_side from, join_side to, double* cost) const {
    return !more_to_ask || all_others_allow(from, to, cost);
  }
  /// The node above which the subtree's own root lies while its links are turned.
  int turned_home() const {
    return data.tree.anc[at(home_first)] == home_root ? home_first : home_root;
  }
  bool single_tree() const { return multi <= 0; }
  /// Has a place other than home been chosen for the clip?
  bool has_moved() const { return best_branch != sister || best_root != home_root; }
  void set_slack();
  void set_bound();
  void tree_changed();  // clusters, terminal counts, marks

 private:
  double least_slack() const;
  double slack_of_better() const;
  void go_to(int u, int v, double cost);
  /// Is a candidate that is no better taken by a perturbing swap? Then the clip is done.
  bool perturbs(int u, int v, double cost);
  bool all_others_allow(join_side from, join_side to, double* cost) const;
};

/// The clip of the whole ingroup: sets and counters of the subtree alone.
void pass_ingroup_alone(swap_run& run);

}  // namespace zeb
