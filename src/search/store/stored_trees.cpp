#include "search/store/stored_trees.h"

#include <algorithm>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "engine/collapsing/collapsing.h"
#include "engine/collapsing/search_marks.h"
#include "engine/passes/passes.h"
#include "search/store/tree_identity.h"
#include "trees/tree_slots.h"

namespace zeb {
namespace {

void link(search_context& context, int slot, int bucket, double score) {
  tree_record& record = record_of(context, slot);
  tree_record& head = context.records.buckets[at(bucket)];
  record.score = score;
  record.bucket = bucket;
  record.tree = slot_tree(context, slot).data();
  record.next = head.next;
  record.prev = &head;
  record.waits = record.taken_in = false;
  if (record.next) record.next->prev = &record;
  head.next = &record;
}

void unlink(search_context& context, int slot) {
  tree_record& record = record_of(context, slot);
  if (record.prev) record.prev->next = record.next;
  if (record.next) record.next->prev = record.prev;
  record.next = record.prev = nullptr;
}

/// Under rules by which trees of different length can become one, those stay apart until the
/// filter. `score` unknown: any.
bool scores_allow(const search_context& context, double a, double b) {
  if (search_level(context) < 3) return true;
  return is_same_score(a, b, kind_of_scores(context.data));
}

/// A stored tree other than that of `except` that is the same as `tree`, which is in normal form.
tree_record* find_same(search_context& context, std::span<const std::int32_t> tree, int bucket,
                       double score, int except) {
  for (tree_record* r = context.records.buckets[at(bucket)].next; r; r = r->next) {
    if (except >= 0 && r == &record_of(context, except)) continue;
    if (!scores_allow(context, r->score, score)) continue;
    if (same_collapsed_tree({r->tree, at(context.data.nodes)}, tree, context.data.n,
                            search_level(context) > 0)) {
      return r;
    }
  }
  return nullptr;
}

}  // namespace

void fetch_tree(search_context& context, std::span<const std::int32_t> source) {
  if (source.data() == context.working_tree.data()) {
    error_end("Internal error (schsup.c): called schgettree to get anx!");
  }
  for (std::size_t v = 0; v < context.working_tree.size(); ++v) {
    context.working_tree[v] = plain_ancestor(source[v]);
  }
}

std::span<std::int32_t> slot_tree(const search_context& context, int slot) {
  return slot_of(context.trees, slot).first(at(context.data.nodes));
}

tree_record& record_of(search_context& context, int slot) {
  return context.records.of_slot[at(slot)];
}

void mark_tree_in_work(const search_context& context, std::span<std::uint8_t> marks) {
  search_marks(context.data, search_level(context), marks);
  if (context.constraints_in_force) context.constraints_in_force->protect(context.data, marks);
}

bool store_marked(search_context& context, std::span<const std::int32_t> tree, int slot,
                  double score, std::span<const std::uint8_t> marks) {
  ALWAYS_CHECK(slot == context.trees.ntrees && slot < context.trees.maxtrees,
               "a tree is stored past the buffer");
  const std::span<std::int32_t> place = slot_tree(context, slot);
  std::copy_n(tree.begin(), place.size(), place.begin());
  const int bucket = canonical_form(place, context.data.n, marks, context.records.scratch);
  if (find_same(context, place, bucket, score, -1)) return false;
  link(context, slot, bucket, score);
  set_tree_count(context.trees, slot + 1);
  return true;
}

bool is_stored(search_context& context, std::span<const std::int32_t> tree, double score,
               std::span<const std::uint8_t> marks) {
  std::vector<std::int32_t> form(tree.begin(), tree.begin() + context.data.nodes);
  const int bucket = canonical_form(form, context.data.n, marks, context.records.scratch);
  return find_same(context, form, bucket, score, -1) != nullptr;
}

bool replace_stored(search_context& context, std::span<const std::int32_t> tree, int slot,
                    double score, std::span<const std::uint8_t> marks) {
  std::vector<std::int32_t> fresh(tree.begin(), tree.begin() + context.data.nodes);
  const int bucket = canonical_form(fresh, context.data.n, marks, context.records.scratch);
  if (find_same(context, fresh, bucket, score, slot)) return false;
  unlink(context, slot);
  std::copy(fresh.begin(), fresh.end(), slot_tree(context, slot).begin());
  link(context, slot, bucket, score);
  return true;
}

namespace {

/// Marks of a tree that comes from outside a swap, and its score where `score` is none. The tree in
/// work becomes this one if either is needed.
double measure(search_context& context, std::span<const std::int32_t> tree, double score,
               std::span<std::uint8_t> marks) {
  if (score < 0 || search_level(context) > 0) {
    std::vector<std::int32_t> plain(tree.begin(), tree.begin() + context.data.nodes);
    forget_collapsed(plain);
    const double length = tree_length(context.data, plain);
    if (score < 0) score = length;
  }
  if (search_level(context) > 0) mark_tree_in_work(context, marks);
  return score;
}

std::vector<std::uint8_t> all_stay(const search_context& context) {
  return std::vector<std::uint8_t>(at(context.data.nodes), 1);
}

}  // namespace

bool store_tree(search_context& context, std::span<const std::int32_t> tree, int slot,
                double score) {
  std::vector<std::uint8_t> marks = all_stay(context);
  score = measure(context, tree, score, marks);
  return store_marked(context, tree, slot, score, marks);
}

bool replace_tree(search_context& context, std::span<const std::int32_t> tree, int slot,
                  double score) {
  std::vector<std::uint8_t> marks = all_stay(context);
  measure(context, tree, score, marks);
  return replace_stored(context, tree, slot, score, marks);
}

void adopt_tree(search_context& context, int slot) {
  std::vector<std::uint8_t> marks = all_stay(context);
  const std::span<std::int32_t> tree = slot_tree(context, slot);
  const double score = measure(context, tree, no_score, marks);
  link(context, slot, canonical_form(tree, context.data.n, marks, context.records.scratch), score);
  record_of(context, slot).taken_in = true;
}

std::vector<std::int32_t> normal_form(search_context& context, std::span<const std::int32_t> tree,
                                      double score) {
  std::vector<std::uint8_t> marks = all_stay(context);
  measure(context, tree, score, marks);
  std::vector<std::int32_t> form(tree.begin(), tree.begin() + context.data.nodes);
  canonical_form(form, context.data.n, marks, context.records.scratch);
  return form;
}

bool has_form(search_context& context, std::span<const std::int32_t> form, double score) {
  return find_same(context, form, tree_bucket(form, context.data.n), score, -1) != nullptr;
}

bool store_form(search_context& context, std::span<const std::int32_t> form, double score) {
  const int slot = context.trees.ntrees;
  ALWAYS_CHECK(slot < context.trees.maxtrees, "a tree is stored past the buffer");
  if (has_form(context, form, score)) return false;
  std::ranges::copy(form, slot_tree(context, slot).begin());
  link(context, slot, tree_bucket(form, context.data.n), score);
  set_tree_count(context.trees, slot + 1);
  return true;
}

bool tree_is_new(search_context& context, std::span<const std::int32_t> tree, int slot,
                 double score) {
  const std::vector<std::int32_t> form = normal_form(context, tree, score);
  std::ranges::copy(form, slot_tree(context, slot).begin());
  return !has_form(context, form, score);
}

void forget_trees(search_context& context) {
  set_tree_count(context.trees, 0);
  for (tree_record& head : context.records.buckets) head.next = nullptr;
}

/// Slots keep their order; the chains are made anew, since records move.
void keep_trees(search_context& context, std::span<const std::uint8_t> keep) {
  const int before = context.trees.ntrees;
  int kept = 0;
  int swapping_now = context.swapping_index;
  int current = context.shown.current_tree;
  std::vector<tree_record> records;
  for (int t = 0; t < before; ++t) {
    if (t == context.swapping_index) swapping_now = keep[at(t)] ? kept : -1;
    if (t == context.shown.current_tree) current = kept;
    if (!keep[at(t)]) continue;
    records.push_back(record_of(context, t));
    ++kept;
  }
  context.swapping_index = swapping_now;
  context.shown.current_tree = current;
  select_trees(context.trees, keep);
  for (tree_record& head : context.records.buckets) head.next = nullptr;
  for (int t = 0; t < kept; ++t) {
    const tree_record& old = records[at(t)];
    link(context, t, old.bucket, old.score);
    record_of(context, t).waits = old.waits;
    record_of(context, t).taken_in = old.taken_in;
  }
}

double best_stored(search_context& context, int first_slot) {
  double best = unknown_score;
  for (int t = first_slot; t < context.trees.ntrees; ++t) {
    best = std::min(best, record_of(context, t).score);
  }
  return best;
}

bool was_left(search_context& context, int slot, double score, int capacity) {
  const double allowed = context.rules.suboptimal;
  const double own = record_of(context, slot).score;
  const score_kind kind = kind_of_scores(context.data);
  return allowed > 0 && context.trees.ntrees < capacity && is_better_score(score, own, kind) &&
         is_within_bound(own, std::min(context.score_limit, score + allowed), kind);
}

void purge_above(search_context& context, double limit, int first_slot) {
  const int count = context.trees.ntrees;
  const score_kind kind = kind_of_scores(context.data);
  std::vector<std::uint8_t> keep(at(count), 1);
  bool any = false;
  for (int t = first_slot; t < count; ++t) {
    const tree_record& record = record_of(context, t);
    if (is_within_bound(record.score, limit, kind) || record.waits || t == context.swapping_index) {
      continue;
    }
    keep[at(t)] = 0;
    any = true;
  }
  if (any) keep_trees(context, keep);
}

}  // namespace zeb
