#include "trees/branch_labels.h"

#include <algorithm>
#include <map>
#include <memory>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "matrix/matrix.h"
#include "trees/terminal_sets.h"
#include "trees/tree_store.h"
#include "trees/tree_walks.h"

namespace zeb {

label_memory_state label_memory;

namespace {

std::uint64_t hash_of(const_tree_span tree) {
  std::uint64_t hash = 0;
  for (const tree_node cell : tree.first(at(node_limit(tree, matrix.ntax)))) {
    hash = (hash ^ static_cast<std::uint32_t>(cell)) * 0x9e3779b97f4a7c15ULL;
    hash ^= hash >> 31;
  }
  return hash;
}

/// As much of `mxram` as stays free for what isn't in it.
std::size_t most_label_bytes() {
  constexpr std::size_t least = 4'000'000;
  return std::max(least, arena.size / 8);
}

/// Labels and lengths one after the other, each ended by a zero byte.
std::string texts_of(std::span<const branch_label> labels) {
  std::string texts;
  for (const branch_label& one : labels) {
    texts.append(one.label).push_back('\0');
    texts.append(one.length).push_back('\0');
  }
  texts.shrink_to_fit();
  return texts;
}

/// Null, with a warning for the first one, where there is no memory for them.
std::shared_ptr<const tree_labels> kept_labels(int number, std::span<const branch_label> labels) {
  std::string texts = texts_of(labels);
  if (label_memory.bytes + texts.capacity() > most_label_bytes()) {
    if (!label_memory.full)
      warning_f(
          "Labels and lengths of trees fill the memory that \"mxram\" leaves for them (%s): from "
          "tree %i on they aren't kept",
          megabytes_text(static_cast<double>(most_label_bytes())).c_str(), number);
    label_memory.full = true;
    return nullptr;
  }
  label_memory.full = false;
  return std::make_shared<const tree_labels>(hash_of(stored_tree(number)), std::move(texts));
}

/// The sum of two lengths; one of them where the other is none.
std::string sum_of_lengths(const std::string& a, const std::string& b) {
  const double x = real_of(a).value_or(0);
  const double y = real_of(b).value_or(0);
  if (y == 0) return a.empty() ? b : a;
  if (x == 0) return b;
  return text_of("%.12g", x + y);
}

void merge(branch_label& into, const branch_label& other) {
  if (into.label.empty()) into.label = other.label;
  into.length = sum_of_lengths(into.length, other.length);
}

/// The node of the larger side where the root has just two descendants; -1 elsewhere.
int larger_side_of_root(const_tree_span tree, int ntax) {
  const descendant_lists lists = descendants_of(tree, ntax);
  if (lists.count[at(ntax)] != 2) return -1;
  const int one = lists.first[at(ntax)];
  const int other = lists.sibling[at(one)];
  std::vector<std::uint8_t> flags(at(ntax), 0);
  flag_terminals(tree, ntax, one, flags);
  const auto size = std::ranges::count(flags, 1);
  return 2 * size > terminals_in(tree, ntax) ? one : other;
}

}  // namespace

tree_labels::tree_labels(std::uint64_t tree, std::string all_texts)
    : tree_hash(tree), texts(std::move(all_texts)) {
  label_memory.bytes += texts.capacity();
}

tree_labels::~tree_labels() { label_memory.bytes -= texts.capacity(); }

void label_tree(int number, std::span<const branch_label> labels) {
  std::shared_ptr<const tree_labels> kept;
  if (!std::ranges::all_of(labels, &branch_label::empty)) kept = kept_labels(number, labels);
  if (!kept && at(number) >= store.labels.size()) return;
  if (at(number) >= store.labels.size()) store.labels.resize(at(number) + 1);
  store.labels[at(number)] = std::move(kept);
}

std::vector<branch_label> labels_of_tree(int number) {
  if (at(number) >= store.labels.size() || !store.labels[at(number)]) return {};
  const tree_labels& kept = *store.labels[at(number)];
  if (kept.tree_hash != hash_of(stored_tree(number))) return {};
  std::vector<branch_label> labels(at(store.nnodes));
  std::size_t from = 0;
  const auto next_text = [&] {
    const std::size_t end = kept.texts.find('\0', from);
    const std::string text = kept.texts.substr(from, end - from);
    from = end + 1;
    return text;
  };
  for (std::size_t n = 0; n < labels.size() && from < kept.texts.size(); ++n) {
    labels[n].label = next_text();
    labels[n].length = next_text();
  }
  return labels;
}

bool any_tree_labelled() {
  for (int t = 0; t < store.ntrees && at(t) < store.labels.size(); ++t) {
    if (store.labels[at(t)] && store.labels[at(t)]->tree_hash == hash_of(stored_tree(t)))
      return true;
  }
  return false;
}

std::vector<branch_label> labels_on_branches(const_tree_span from,
                                             std::span<const branch_label> labels,
                                             const_tree_span to, int ntax) {
  const std::vector<terminal_set_key> old_keys = terminal_set_keys(from, ntax);
  const std::vector<terminal_set_key> new_keys = terminal_set_keys(to, ntax);
  const terminal_set_key all = old_keys[at(ntax)];
  if (new_keys[at(ntax)] != all) return {};
  std::map<terminal_set_key, branch_label> by_branch;
  for (std::size_t n = 0; n < old_keys.size() && n < labels.size(); ++n) {
    if (n == at(ntax) || labels[n].empty()) continue;
    merge(by_branch[key_of_branch(old_keys[n], all)], labels[n]);
  }
  const int without_length = larger_side_of_root(to, ntax);
  std::vector<branch_label> result(to.size());
  for (int n = 0; n < static_cast<int>(new_keys.size()); ++n) {
    if (n == ntax || (n < ntax && is_absent(to, n))) continue;
    const auto found = by_branch.find(key_of_branch(new_keys[at(n)], all));
    if (found == by_branch.end()) continue;
    result[at(n)] = found->second;
    if (n < ntax) result[at(n)].label.clear();
    if (n == without_length && !found->second.length.empty()) result[at(n)].length.assign(1, '0');
  }
  // A label of a terminal, which no internal node shares, stays with it.
  for (std::size_t t = 0; t < at(ntax) && t < labels.size(); ++t) {
    if (!labels[t].label.empty()) result[t].label = labels[t].label;
  }
  return result;
}

labels_in_change::labels_in_change(int number) : number_(number), labels_(labels_of_tree(number)) {
  const const_tree_span tree = stored_tree(number);
  if (!labels_.empty()) tree_.assign(tree.begin(), tree.end());
}

void labels_in_change::put_back() const {
  if (tree_.empty()) return;
  label_tree(number_, labels_on_branches(tree_, labels_, stored_tree(number_), matrix.ntax));
}

}  // namespace zeb
