#include "search/moves/wagner.h"

#include <algorithm>
#include <optional>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/random.h"
#include "engine/fit/implied_weighting.h"
#include "search/moves/constrained_start.h"
#include "search/moves/other_outgroup.h"
#include "search/moves/wagner_build.h"
#include "search/moves/wagner_choice.h"
#include "search/moves/wagner_clusters.h"

namespace zeb {

namespace {

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
                const addition_settings& additions, const build_constraints& obeyed) {
  wagner_build build(context, additions, obeyed);
  const bool constrained = obeyed.rows || context.slots.forbids;
  const int n = context.data.n;
  random_sequence(context.random, n, build.order.first(at(n)), 0, {});
  std::optional<other_outgroup> outgroup;
  if (context.rules.random_outgroup && !constrained) outgroup.emplace(context.data, context.random);
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
  if (!interrupted() && outgroup) outgroup->root_back(anc);
  return !build.stuck;
}

/// Taxa that float may be put where they leave others no place, and what negative groups need may
/// come to hang on the last taxon alone: another sequence mostly helps. Then a tree is taken that
/// has all positive groups, and taxa are added so as to get it; where that doesn't help either, any
/// tree must do.
void build_under_constraints(search_context& context, std::span<std::int32_t> anc,
                             const addition_settings& additions) {
  const constraint_rows& rows = context.constraints_in_force->rows();
  constexpr int sequences_tried = 5;
  using closing = group_tables::closing;
  for (int i = 0; i < sequences_tried; ++i) {
    if (build_once(context, anc, additions, {&rows, closing::early}) || interrupted()) return;
  }
  const std::optional<constraint_rows> closed = without_floating(rows);
  for (int i = 0; i < sequences_tried; ++i) {
    const build_constraints obeyed{closed ? &*closed : &rows,
                                   i % 2 ? closing::early : closing::surely};
    if (build_once(context, anc, additions, obeyed) || interrupted()) return;
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
  const bool by_clusters = additions.cluster_from > 0 && additions.cluster_from < context.data.n;
  if (context.data.whole && (by_clusters || additions.look > 0 || additions.informative > 0))
    error_end("Wagner with clusters or selected add. seqs. not implemented for landmarks");
  if (context.constraints_in_force) {
    build_under_constraints(context, anc, additions);
  } else {
    build_once(context, anc, additions, {});
  }
}

}  // namespace zeb
