#include "search/search_session.h"

#include <algorithm>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/progress.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "engine/passes/links.h"
#include "language/list_text.h"
#include "search/breaking_trees.h"
#include "search/hooks.h"
#include "search/part_search.h"
#include "search/search_results.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"
#include "search/workers/worker_pool.h"
#include "trees/notation/auto_save.h"

namespace zeb {
namespace {

struct session_state {
  const search_context* running = nullptr;
};
session_state session;

search_data& users_data() {
  search_data& data = packed_matrix(false);
  if (swapping.use_inters > 0 && data.has_wide) {
    error_end("Sorry, \"bbreak:inters\" is invalid for Sankoff/continuous characters");
  }
  return data;
}

bool has_inactive_taxa(const search_data& data, const_tree_span tree) {
  for (int i = data.n; i < data.all_taxa; ++i) {
    if (!is_absent(tree, data.pack_to_taxon[at(i)])) return true;
  }
  return false;
}

/// Of those that are searched here, and by workers.
tree_list trees_of_parts(const search_context& context) {
  tree_list trees = trees_in_work();
  for (const search_context* part = context.part; part; part = part->part) {
    for (int t = 0; t < part->trees.ntrees; ++t)
      matrix_form(*part, t, trees.emplace_back(at(store.nnodes)));
  }
  return trees;
}

/// A search that starts from such a tree moves only to trees that break none, if it can.
void warn_of_breaking_trees(search_context& context) {
  const std::vector<std::uint8_t> breaking = breaking_trees(context);
  const std::vector<std::string> numbers =
      list_items(context.trees.ntrees, [&breaking](int t) { return breaking[at(t)] != 0; });
  if (numbers.empty()) return;
  const std::string title = "These trees in memory break the constraints:";
  warning(title + wrapped_words(numbers, title.size()));
}

}  // namespace

const search_context* running_search() { return session.running; }

void matrix_form(const search_context& context, int number, tree_span tree) {
  const std::span<const std::int32_t> slot = slot_tree(context, number);
  std::vector<std::int32_t> plain(slot.begin(), slot.end());
  forget_collapsed(plain);
  to_buffer(context.data, plain, tree);
}

search_session::search_session(tree_slots& slots, silence silent)
    : scope_(users_data(), slots, rules_in_force(), randomness.generator), room_(context().data) {
  context().shown.silent = silent == silence::on || part_search.sector;
  if (const search_context* sector = part_search.sector; sector && sector->constraints_in_force)
    context().constraints_in_force =
        search_constraints::of_rows(sector->data, sector->constraints_in_force->rows());
  context().lowest_score = last_search.lowest_score;
  try {
    take_trees_in();
  } catch (...) {
    leave();
    for (const former_tree& former : former_)
      std::copy(former.tree.begin(), former.tree.end(), slot_of(slots, former.number).begin());
    throw;
  }
  former_ = {};
}

search_session::~search_session() { leave(); }

/// Where the way there and back would change the tree.
void search_session::keep_former(int number) {
  const search_data& data = context().data;
  const const_tree_span tree = slot_of(context().trees, number);
  const int ntax = data.all_taxa;
  const bool comes_back =
      data.n == ntax && tree[at(ntax)] == 2 * ntax - 1 && tree[at(data.pack_to_taxon[0])] == ntax;
  if (!comes_back) former_.push_back({number, {tree.begin(), tree.end()}});
}

void search_session::take_trees_in() {
  search_context& c = context();
  const int count = c.trees.ntrees;
  int cut = 0;
  for (; taken_in_ < count; ++taken_in_) {
    keep_former(taken_in_);
    cut += has_inactive_taxa(c.data, slot_of(c.trees, taken_in_));
    if (!to_internal(c.data, slot_of(c.trees, taken_in_), c.working_tree, true)) {
      error_end("Tree", taken_in_, "lacks some active taxa: searches need trees with all of them");
    }
    std::copy(c.working_tree.begin(), c.working_tree.end(), slot_tree(c, taken_in_).begin());
  }
  all_taken_in_ = true;
  if (cut > 0 && !c.shown.silent) {
    emit("Note: inactive taxa are dropped from ", counted(cut, "tree", "trees"), " in memory.\n");
  }
  if (&c.trees == &store && !part_search.sector) {
    set_auto_save_view({[&c](int number, tree_span tree) { matrix_form(c, number, tree); },
                        [&c] { return trees_of_parts(c); }});
    session.running = &c;
  }
  for (int t = 0; t < count; ++t) adopt_tree(c, t);
  if (c.constraints_in_force && !c.shown.silent) warn_of_breaking_trees(c);
}

void search_session::leave() {
  if (part_search.sector) {
    part_search.sector->rearrangements.add(context().rearrangements);
    part_search.sector->moves_done += context().moves_done;
  } else {
    set_auto_save_view({});
    session.running = nullptr;
    if (hooks_of_search.search_ended) hooks_of_search.search_ended(context());
  }
  go_on_from(context().random);
  keep_counters(context());
  clear_progress();
  const tree_slots& trees = context().trees;
  const int count = all_taken_in_ ? trees.ntrees : taken_in_;
  for (int t = 0; t < count; ++t) {
    forget_collapsed(slot_tree(context(), t));
    to_buffer(context().data, slot_tree(context(), t), slot_of(trees, t), room_);
  }
}

}  // namespace zeb
