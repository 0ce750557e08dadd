#include "consensus/node_sets.h"

#include <algorithm>
#include <cstring>

#include "base/arena.h"
#include "base/indices.h"

namespace zeb {
namespace {

/// The finaliser of splitmix64 (Steele, Lea and Flood 2014): neighbours get unrelated words.
set_word scrambled(set_word z) {
  z += 0x9e3779b97f4a7c15ULL;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
  return z ^ (z >> 31);
}

}  // namespace

node_sets_builder::node_sets_builder(int ntax, std::span<const std::uint8_t> excluded)
    : ntax_(ntax),
      words_(set_words(ntax)),
      excluded_(excluded.begin(), excluded.end()),
      keys_(at(ntax)),
      sets_(alloc_low<set_word>(checked_product(at(ntax), words_), 64)),
      size_(at(ntax), 0),
      pending_(at(ntax), 0),
      check_(at(ntax), 0),
      is_filled_(at(ntax), 0) {
  excluded_.resize(at(ntax), 0);
  for (int t = 0; t < ntax; ++t) keys_[at(t)] = scrambled(static_cast<set_word>(t));
}

std::size_t node_sets_builder::bytes_needed(int ntax) {
  return checked_product(checked_product(at(ntax), set_words(ntax)), sizeof(set_word)) + 64;
}

void node_sets_builder::add_terminal(int node, int terminal) {
  set_word* words = sets_.data() + row(node) * words_;
  if (!is_filled_[row(node)]) std::memset(words, 0, words_ * sizeof(set_word));
  is_filled_[row(node)] = 1;
  if (excluded_[at(terminal)]) return;
  words[at(terminal) / taxa_per_word] |= set_word{1} << (terminal % taxa_per_word);
  ++size_[row(node)];
  check_[row(node)] += keys_[at(terminal)];
}

void node_sets_builder::add_descendant(int node, int descendant) {
  set_word* words = sets_.data() + row(node) * words_;
  const set_word* from = set(descendant);
  if (!is_filled_[row(node)])
    std::memcpy(words, from, words_ * sizeof(set_word));
  else
    for (std::size_t w = 0; w < words_; ++w) words[w] |= from[w];
  is_filled_[row(node)] = 1;
  size_[row(node)] += size(descendant);
  check_[row(node)] += check(descendant);
}

void node_sets_builder::build(const_tree_span tree) {
  const int limit = node_limit(tree, ntax_);
  const std::size_t rows = at(limit - ntax_);
  std::fill_n(size_.begin(), rows, 0);
  std::fill_n(check_.begin(), rows, 0);
  std::fill_n(pending_.begin(), rows, 0);
  std::fill_n(is_filled_.begin(), rows, std::uint8_t{0});
  order_.clear();
  for (int t = 0; t < ntax_; ++t)
    if (!is_absent(tree, t)) ++pending_[row(tree[at(t)])];
  for (int n = ntax_ + 1; n < limit; ++n) ++pending_[row(tree[at(n)])];
  // From each terminal go rootward as long as that completes nodes.
  for (int t = 0; t < ntax_; ++t) {
    if (is_absent(tree, t)) continue;
    int node = tree[at(t)];
    if (node != ntax_) add_terminal(node, t);
    while (--pending_[row(node)] == 0 && node != ntax_) {
      order_.push_back(node);
      const int above = tree[at(node)];
      if (above != ntax_) add_descendant(above, node);
      node = above;
    }
  }
}

}  // namespace zeb
