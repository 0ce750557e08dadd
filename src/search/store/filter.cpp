#include "search/store/filter.h"

#include <algorithm>
#include <numeric>
#include <set>
#include <vector>

#include "base/indices.h"
#include "base/interrupts.h"
#include "console/output.h"
#include "engine/collapsing/collapsing.h"
#include "search/search_report.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"
#include "trees/branch_labels.h"
#include "trees/tree_store.h"
#include "trees/tree_undo.h"

namespace zeb {
namespace {

/// Trees dropped since they are the same as another one when collapsed.
struct identical_trees {
  bool of_different_length = false;
  int of_same_length = 0;
};

/// The trees from the best to the worst; in the order of their slots where they are as good.
std::vector<int> slots_from_best(search_context& context) {
  std::vector<int> slots(at(context.trees.ntrees));
  std::iota(slots.begin(), slots.end(), 0);
  std::stable_sort(slots.begin(), slots.end(), [&](int a, int b) {
    return record_of(context, a).score < record_of(context, b).score;
  });
  return slots;
}

/// Marks the worse of each pair that is one tree, the later where both are as good: the best tree
/// always stays. The store keeps trees of one length apart by itself, so of those only trees that
/// the user had can be the same.
identical_trees mark_identical(search_context& context, std::span<std::uint8_t> keep) {
  identical_trees dropped;
  const bool collapsed = search_level(context) > 0;
  std::vector<std::vector<int>> by_bucket(bucket_count);
  for (const int t : slots_from_best(context)) {
    if (keep[at(t)]) by_bucket[at(record_of(context, t).bucket)].push_back(t);
  }
  const auto drop_if_same = [&](int better, int other) {
    if (!same_collapsed_tree(slot_tree(context, better), slot_tree(context, other), context.data.n,
                             collapsed))
      return;
    const tree_record& first = record_of(context, better);
    const tree_record& later = record_of(context, other);
    const bool same_length = is_same_score(first.score, later.score, kind_of_scores(context.data));
#ifndef NDEBUG
    if (same_length && !first.taken_in && !later.taken_in)
      emitf("OOps , two times the same tree!!!\n");
#endif
    keep[at(other)] = 0;
    dropped.of_different_length |= !same_length;
    dropped.of_same_length += same_length;
  };
  for (const std::vector<int>& slots : by_bucket)
    for (std::size_t i = 0; i < slots.size(); ++i)
      for (std::size_t j = i + 1; j < slots.size(); ++j)
        if (keep[at(slots[i])] && keep[at(slots[j])]) drop_if_same(slots[i], slots[j]);
  return dropped;
}

void filter(search_context& context, double best, bool may_coincide) {
  const double limit = best + context.rules.suboptimal;
  const score_kind kind = kind_of_scores(context.data);
  std::vector<std::uint8_t> keep(at(context.trees.ntrees), 1);
  for (int t = 0; t < context.trees.ntrees; ++t) {
    keep[at(t)] = is_within_bound(record_of(context, t).score, limit, kind);
  }
  const identical_trees dropped = may_coincide ? mark_identical(context, keep) : identical_trees{};
  keep_trees(context, keep);
  if (context.shown.silent) return;
  if (dropped.of_different_length) {
    report_line("Note: some trees of different length are identical as collapsed. Discarded.");
  }
  if (search_level(context) > 0) return tell_equal_as_collapsed(dropped.of_same_length);
  if (dropped.of_same_length > 0)
    emit("Note: ", dropped.of_same_length, " trees are identical to others. Discarded.\n");
}

}  // namespace

void filter_by_score(search_context& context, double best) {
  filter(context, best, search_level(context) >= 3 && !context.rules.collapse.automatic);
}

void recheck_trees(search_context& context, double best) { filter(context, best, true); }

int drop_equal_by_full_rule(search_context& context) {
  const int before = context.trees.ntrees;
  if (context.rules.collapse.rule < 4 || before < 2) return 0;
  std::vector<std::uint8_t> keep(at(before), 1);
  std::set<std::vector<tree_node>> known;
  branch_judge judge(context.rules.collapse.rule);
  const bool ended_early = interrupted();
  for (const int t : slots_from_best(context)) {
    report_status_best(context);
    if (interrupted() && !ended_early) break;
    std::vector<tree_node> tree(at(context.trees.nnodes));
    matrix_form(context, t, tree);
    judge.condense(tree);
    keep[at(t)] = known.insert(std::move(tree)).second;
  }
  keep_trees(context, keep);
  return before - context.trees.ntrees;
}

void tell_equal_as_collapsed(int dropped) {
  if (dropped == 0) return;
  emit("Note: ", dropped, " trees are identical to others as collapsed. Discarded.\n");
}

void condense_if_automatic() {
  if (!collapsing.automatic || collapsing.rule == 0) return;
  branch_judge judge(collapsing.rule);
  tree_undo undo(std::vector<std::uint8_t>(at(store.ntrees), 1));
  for (int t = 0; t < store.ntrees; ++t) {
    const labels_in_change labels(t);
    judge.condense(stored_tree(t));
    labels.put_back();
  }
  undo.keep();
}

}  // namespace zeb
