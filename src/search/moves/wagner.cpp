#include "search/moves/wagner.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/random.h"
#include "engine/fit/implied_weighting.h"
#include "engine/passes/passes.h"
#include "search/moves/constrained_start.h"
#include "search/moves/wagner_build.h"
#include "search/moves/wagner_choice.h"
#include "search/moves/wagner_clusters.h"

namespace zeb {

namespace {

/// Another taxon plays terminal 0 for the length of a build, by exchanging their states.
class randomised_outgroup {
 public:
  randomised_outgroup(search_context& context, bool wanted) : data_(context.data) {
    if (!wanted || data_.has_asymmetric) return;
    stand_in_ = context.random.draw() % data_.n;
    exchange();
  }
  ~randomised_outgroup() { exchange(); }
  randomised_outgroup(const randomised_outgroup&) = delete;
  randomised_outgroup& operator=(const randomised_outgroup&) = delete;

  /// Gives the tree its true terminal 0 back, as the root's first descendant.
  void restore_tree(std::span<std::int32_t> anc) const {
    if (stand_in_ == 0) return;
    std::swap(anc[0], anc[at(stand_in_)]);
    // From terminal 0 to the root, ancestors become descendants; the root stays the root.
    const int root = data_.n;
    int below = 0;
    int v = anc[0];
    const int top = v;
    while (v != root) {
      const int above = anc[at(v)];
      anc[at(v)] = below;
      below = v;
      v = above;
    }
    // `below` hung on the root beside the stand-in, which now hangs where the root was.
    anc[at(stand_in_)] = below;
    if (top != root) {
      anc[0] = root;
      anc[at(top)] = root;
    }
  }

 private:
  void exchange() {
    if (stand_in_ == 0) return;
    exchange_terminals(data_, 0, stand_in_);
  }
  search_data& data_;
  int stand_in_ = 0;
};

void add_in_sequence(wagner_build& build) {
  const int n = build.data.n;
  const addition_settings& additions = build.additions;
  const bool by_clusters = additions.cluster_from > 0 && additions.cluster_from < n;
  for (int p = 3; p < n && !build.stuck; ++p) {
    if (by_clusters && p >= additions.cluster_from) {
      add_by_clusters(build, p);
      return;
    }
    if (build.stop_at(p)) return;
    const int taxon = build.order[at(p)];
    build.find_place(taxon);
    build.place_taxon(taxon);
  }
}

void copy_tree_in_work(const search_data& data, std::span<std::int32_t> anc) {
  std::copy_n(data.tree.anc.begin(), anc.size(), anc.begin());
  anc[at(data.n)] = data.nodes;
}

/// One build, with the generator as it stands. False where constraints left a taxon no place.
bool build_once(search_context& context, std::span<std::int32_t> anc,
                const addition_settings& additions, bool constrained) {
  wagner_build build(context, additions);
  const int n = context.data.n;
  random_sequence(context.random, n, build.order.first(at(n)), 0, {});
  const randomised_outgroup outgroup(context, context.rules.random_outgroup && !constrained);
  if (additions.informative > 0 && n >= 6) informative_sequence(build);
  if (additions.look > 0) choose_first_taxa(build, additions.look, additions.rule);
  build.first_tree(0, build.order[1], build.order[2]);
  build.shuffle_scan_order(1);
  if (additions.look > 0) {
    add_chosen_taxa(build);
  } else {
    add_in_sequence(build);
  }
  context.shown.build_percent = -1;
  copy_tree_in_work(context.data, anc);
  if (!interrupted()) outgroup.restore_tree(anc);
  return !build.stuck;
}

/// Taxa that float may be put where they leave others no place, and what negative groups need may
/// come to hang on the last taxon alone: another sequence mostly helps. Where it doesn't, any tree
/// must do.
void build_under_constraints(search_context& context, std::span<std::int32_t> anc,
                             const addition_settings& additions) {
  constexpr int sequences_tried = 10;
  for (int i = 0; i < sequences_tried; ++i) {
    if (build_once(context, anc, additions, true) || interrupted()) return;
  }
  if (!find_constrained_tree(context) && !interrupted())
    error_end("Sorry, cannot build a tree with specified constraints");
  copy_tree_in_work(context.data, anc);
}

}  // namespace

void check_additions(const addition_settings& wanted, bool random_insertion, bool constrained) {
  if (wanted.cluster_from <= 0) return;
  if (random_insertion) {
    error_end(
        "Sorry, wagner trees with node-clusters can't be done with random insertion sequence");
  }
  if (constrained) {
    error_end("Sorry, wagner trees with node-clusters can't be done under tree-constraints");
  }
  if (wanted.look > 0) error_end("Cannot use selected addseqs together with clusters");
}

void wagner_tree(search_context& context, std::span<std::int32_t> anc,
                 const addition_settings& additions) {
  const bool constrained = context.slots.forbids || context.constraints_in_force;
  check_additions(additions, context.rules.random_insertion, constrained);
  if (context.constraints_in_force) {
    build_under_constraints(context, anc, additions);
  } else {
    build_once(context, anc, additions, constrained);
  }
}

}  // namespace zeb
