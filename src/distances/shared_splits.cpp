#include "distances/shared_splits.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"

namespace zeb {

std::vector<terminal_set_key> split_keys(const_tree_span tree, int ntax, bool unrooted) {
  const std::vector<terminal_set_key> of_nodes = terminal_set_keys(tree, ntax);
  const terminal_set_key& all = of_nodes[at(ntax)];
  std::vector<terminal_set_key> terminals;
  for (int t = 0; t < ntax && unrooted; ++t)
    if (!is_absent(tree, t)) terminals.push_back(key_of_branch(of_nodes[at(t)], all));
  std::ranges::sort(terminals);
  std::vector<terminal_set_key> keys;
  for (std::size_t n = at(ntax) + 1; n < of_nodes.size(); ++n) {
    const terminal_set_key key = unrooted ? key_of_branch(of_nodes[n], all) : of_nodes[n];
    if (!std::ranges::binary_search(terminals, key)) keys.push_back(key);
  }
  // The two branches at a root are one.
  std::ranges::sort(keys);
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  return keys;
}

int keys_in_both(std::span<const terminal_set_key> a, std::span<const terminal_set_key> b) {
  int both = 0;
  for (auto i = a.begin(), j = b.begin(); i != a.end() && j != b.end();) {
    if (*i < *j) {
      ++i;
    } else if (*j < *i) {
      ++j;
    } else {
      ++both, ++i, ++j;
    }
  }
  return both;
}

shared_split_counts::shared_split_counts(std::span<const const_tree_span> trees, int ntax,
                                         bool unrooted, const std::function<void(double)>& poll)
    : groups_(trees.size(), 0), counts_(trees.size() * trees.size(), 0) {
  std::vector<std::pair<terminal_set_key, std::uint32_t>> all;
  for (std::size_t t = 0; t < trees.size(); ++t) {
    const std::vector<terminal_set_key> keys = split_keys(trees[t], ntax, unrooted);
    groups_[t] = static_cast<int>(keys.size());
    for (const terminal_set_key& key : keys) all.emplace_back(key, static_cast<std::uint32_t>(t));
  }
  std::ranges::sort(all);
  std::vector<std::uint32_t> members;
  for (std::size_t i = 0; i < all.size();) {
    poll(static_cast<double>(i) / static_cast<double>(all.size()));
    members.clear();
    const terminal_set_key key = all[i].first;
    for (; i < all.size() && all[i].first == key; ++i) members.push_back(all[i].second);
    for (const std::uint32_t a : members) {
      std::uint32_t* row = counts_.data() + a * groups_.size();
      for (const std::uint32_t b : members) ++row[b];
    }
  }
}

}  // namespace zeb
