#include "search/store/stored_trees.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "engine/collapsing/collapsing.h"
#include "engine/collapsing/search_marks.h"
#include "engine/passes/passes.h"
#include "search/store/tree_identity.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

const search_data& data() { return *current_search_data; }
tree_record& record_of(int slot) { return searching.tree_records[at(slot)]; }
std::span<std::int32_t> scratch() { return searching.identity_scratch; }
bool fractional() { return data().has_continuous || data().implied_on; }

void link(int slot, int bucket, double score) {
  tree_record& record = record_of(slot);
  tree_record& head = searching.hash_buckets[at(bucket)];
  record.score = score;
  record.bucket = bucket;
  record.tree = slot_tree(slot).data();
  record.next = head.next;
  record.prev = &head;
  record.waits = record.taken_in = false;
  if (record.next) record.next->prev = &record;
  head.next = &record;
}

void unlink(int slot) {
  tree_record& record = record_of(slot);
  if (record.prev) record.prev->next = record.next;
  if (record.next) record.next->prev = record.prev;
  record.next = record.prev = nullptr;
}

/// Under rules by which trees of different length can become one, those stay apart until the
/// filter. `score` unknown: any.
bool scores_allow(double a, double b) {
  if (search_level() < 3) return true;
  return same_score(data(), a, b);
}

/// A stored tree other than that of `except` that is the same as `tree`, which is in normal form.
tree_record* find_same(std::span<const std::int32_t> tree, int bucket, double score, int except) {
  for (tree_record* r = searching.hash_buckets[at(bucket)].next; r; r = r->next) {
    if (except >= 0 && r == &record_of(except)) continue;
    if (!scores_allow(r->score, score)) continue;
    if (same_collapsed_tree({r->tree, at(data().nodes)}, tree, data().n, search_level() > 0)) {
      return r;
    }
  }
  return nullptr;
}

double tolerance() { return fractional() ? 1e-06 : 0.0; }

/// Trees dropped since they are the same as another one when collapsed.
struct identical_trees {
  bool of_different_length = false;
  int of_same_length = 0;
};

/// Marks the later of each pair that is one tree. The store keeps trees of one length apart by
/// itself, so only those that the user had can be the same.
identical_trees mark_identical(std::span<std::uint8_t> keep) {
  identical_trees dropped;
  std::vector<std::vector<int>> by_bucket(bucket_count);
  for (int t = 0; t < store.ntrees; ++t) {
    if (keep[at(t)]) by_bucket[at(record_of(t).bucket)].push_back(t);
  }
  for (const std::vector<int>& slots : by_bucket) {
    for (std::size_t i = 0; i < slots.size(); ++i) {
      if (!keep[at(slots[i])]) continue;
      for (std::size_t j = i + 1; j < slots.size(); ++j) {
        if (!keep[at(slots[j])] || !same_collapsed_tree(slot_tree(slots[i]), slot_tree(slots[j]),
                                                        data().n, search_level() > 0)) {
          continue;
        }
        const tree_record& first = record_of(slots[i]);
        const tree_record& later = record_of(slots[j]);
        const bool same_length = same_score(data(), first.score, later.score);
#ifndef NDEBUG
        if (same_length && !first.taken_in && !later.taken_in) {
          emitf("OOps , two times the same tree!!!\n");
        }
#endif
        keep[at(slots[j])] = 0;
        dropped.of_different_length |= !same_length;
        dropped.of_same_length += same_length;
      }
    }
  }
  return dropped;
}

}  // namespace

/// Slots keep their order; the chains are made anew, since records move.
void keep_trees(std::span<const std::uint8_t> keep) {
  const int before = store.ntrees;
  int kept = 0;
  int swapping = searching.swapping_index;
  int current = searching.current_tree;
  std::vector<tree_record> records;
  for (int t = 0; t < before; ++t) {
    if (t == searching.swapping_index) swapping = keep[at(t)] ? kept : -1;
    if (t == searching.current_tree) current = kept;
    if (!keep[at(t)]) continue;
    records.push_back(record_of(t));
    ++kept;
  }
  searching.swapping_index = swapping;
  searching.current_tree = current;
  select_trees(store, keep);
  for (tree_record& head : searching.hash_buckets) head.next = nullptr;
  for (int t = 0; t < kept; ++t) {
    const tree_record& old = records[at(t)];
    link(t, old.bucket, old.score);
    record_of(t).waits = old.waits;
    record_of(t).taken_in = old.taken_in;
  }
}

void schgettree(std::span<const std::int32_t> source) {
  if (source.data() == searching.anx.data()) {
    error_end("Internal error (schsup.c): called schgettree to get anx!");
  }
  for (std::size_t v = 0; v < searching.anx.size(); ++v) {
    searching.anx[v] = plain_ancestor(source[v]);
  }
}

std::span<std::int32_t> slot_tree(int slot) {
  return stored_tree(slot).first(at(current_search_data->nodes));
}

int search_level() { return collapsing.rule; }

void mark_tree_in_work(std::span<std::uint8_t> marks) {
  search_marks(data(), search_level(), marks);
}

bool store_marked(std::span<const std::int32_t> tree, int slot, double score,
                  std::span<const std::uint8_t> marks) {
  ALWAYS_CHECK(slot == store.ntrees && slot < store.maxtrees, "a tree is stored past the buffer");
  const std::span<std::int32_t> place = slot_tree(slot);
  std::copy_n(tree.begin(), place.size(), place.begin());
  const int bucket = canonical_form(place, data().n, marks, scratch());
  if (find_same(place, bucket, score, -1)) return false;
  link(slot, bucket, score);
  set_tree_count(store, slot + 1);
  return true;
}

bool replace_stored(std::span<const std::int32_t> tree, int slot, double score,
                    std::span<const std::uint8_t> marks) {
  std::vector<std::int32_t> fresh(tree.begin(), tree.begin() + data().nodes);
  const int bucket = canonical_form(fresh, data().n, marks, scratch());
  if (find_same(fresh, bucket, score, slot)) return false;
  unlink(slot);
  std::copy(fresh.begin(), fresh.end(), slot_tree(slot).begin());
  link(slot, bucket, score);
  return true;
}

namespace {

/// Length and marks of a tree that comes from outside a swap. The tree in work becomes this one.
double measure(std::span<const std::int32_t> tree, std::span<std::uint8_t> marks) {
  double score = searching.pending_score;
  searching.pending_score = no_score;
  if (score < 0 || search_level() > 0) {
    std::vector<std::int32_t> plain(tree.begin(), tree.begin() + data().nodes);
    forget_collapsed(plain);
    const double length = tree_length(*current_search_data, plain);
    if (score < 0) score = length;
  }
  if (search_level() > 0) mark_tree_in_work(marks);
  return score;
}

std::vector<std::uint8_t> all_stay() { return std::vector<std::uint8_t>(at(data().nodes), 1); }

}  // namespace

bool store_tree(std::span<const std::int32_t> tree, int slot) {
  std::vector<std::uint8_t> marks = all_stay();
  const double score = measure(tree, marks);
  return store_marked(tree, slot, score, marks);
}

bool replace_tree(std::span<const std::int32_t> tree, int slot, double score) {
  std::vector<std::uint8_t> marks = all_stay();
  searching.pending_score = score;
  measure(tree, marks);
  return replace_stored(tree, slot, score, marks);
}

void adopt_tree(int slot) {
  std::vector<std::uint8_t> marks = all_stay();
  searching.pending_score = no_score;
  const double score = measure(slot_tree(slot), marks);
  link(slot, canonical_form(slot_tree(slot), data().n, marks, scratch()), score);
  record_of(slot).taken_in = true;
}

bool tree_is_new(std::span<const std::int32_t> tree, int slot, double score) {
  std::vector<std::uint8_t> marks = all_stay();
  searching.pending_score = score;
  measure(tree, marks);
  const std::span<std::int32_t> place = slot_tree(slot);
  std::copy_n(tree.begin(), place.size(), place.begin());
  const int bucket = canonical_form(place, data().n, marks, scratch());
  return find_same(place, bucket, score, -1) == nullptr;
}

void purge_above(double limit, int first_slot) {
  std::vector<std::uint8_t> keep(at(store.ntrees), 1);
  bool any = false;
  for (int t = first_slot; t < store.ntrees; ++t) {
    const tree_record& record = record_of(t);
    if (record.score <= limit + tolerance() || record.waits || t == searching.swapping_index) {
      continue;
    }
    keep[at(t)] = 0;
    any = true;
  }
  if (any) keep_trees(keep);
}

void tell_equal_as_collapsed(int dropped) {
  if (dropped == 0) return;
  emit("Note: ", dropped, " trees are identical to others as collapsed. Discarded.\n");
}

void filter_by_score(double best) {
  const double limit = best + search_settings.suboptimal + tolerance();
  std::vector<std::uint8_t> keep(at(store.ntrees), 1);
  for (int t = 0; t < store.ntrees; ++t) keep[at(t)] = record_of(t).score <= limit;
  const bool may_coincide = search_level() >= 3 && !collapsing.automatic;
  const identical_trees dropped = may_coincide ? mark_identical(keep) : identical_trees{};
  keep_trees(keep);
  if (searching.silent) return;
  if (dropped.of_different_length) {
    report_line("Note: some trees of different length are identical as collapsed. Discarded.");
  }
  tell_equal_as_collapsed(dropped.of_same_length);
}

double recheck_trees(std::string_view label) {
  const std::string title = "Checking " + std::string(label) + " trees...";
  double best = unknown_score;
  for (int t = 0; t < store.ntrees; ++t) {
    show_progress(title, t, 2.0 * store.ntrees);
    const std::span<std::int32_t> tree = slot_tree(t);
    forget_collapsed(tree);
    record_of(t).score = tree_length(*current_search_data, tree);
    best = std::min(best, record_of(t).score);
  }
  const double limit = best + search_settings.suboptimal + tolerance();
  std::vector<std::uint8_t> keep(at(store.ntrees), 0);
  std::vector<std::uint8_t> marks = all_stay();
  for (int t = 0; t < store.ntrees; ++t) {
    show_progress(title, store.ntrees + t, 2.0 * store.ntrees);
    if (record_of(t).score > limit) continue;
    keep[at(t)] = 1;
    const std::span<std::int32_t> tree = slot_tree(t);
    if (search_level() > 0) {
      tree_length(*current_search_data, tree);
      mark_tree_in_work(marks);
    }
    record_of(t).bucket = canonical_form(tree, data().n, marks, scratch());
  }
  clear_progress();
  mark_identical(keep);
  keep_trees(keep);
  searching.last_best = best;
  return best;
}

}  // namespace zeb
