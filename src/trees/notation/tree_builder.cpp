#include "trees/notation/tree_builder.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "trees/tree_walks.h"

namespace zeb {

tree_builder::tree_builder(int ntax) : ntax_(ntax) { begin(); }

void tree_builder::begin() {
  up_.assign(at(ntax_) + 1, -1);
  first_terminal_.assign(1, -1);
  current_ = last_ = ntax_;
  last_terminal_ = -1;
  terminals_ = 0;
  opened_ = 0;
  root_opened_ = false;
}

int tree_builder::new_node(int ancestor) {
  up_.push_back(ancestor);
  first_terminal_.push_back(-1);
  return static_cast<int>(up_.size()) - 1;
}

void tree_builder::open_node() {
  const std::int64_t most = 3 * (2 * std::int64_t{ntax_} - 1);
  if (++opened_ > most) {
    error_end("Parenthetical tree contains too many opening parents ... can't read it");
  }
  if (opened_ == 1 && terminals_ == 0) {
    root_opened_ = true;
  } else {
    current_ = new_node(current_);
  }
  last_ = current_;
}

bool tree_builder::close_node() {
  last_ = current_;
  if (current_ == ntax_) return false;
  const int below = up_[at(current_)];
  int& first = first_terminal_[at(below - ntax_)];
  if (first < 0) first = first_terminal_[at(current_ - ntax_)];
  current_ = below;
  return true;
}

void tree_builder::add_terminal(int taxon) {
  if (up_[at(taxon)] >= 0) error_end("Taxon", taxon, "is included more than once in the tree");
  up_[at(taxon)] = current_;
  int& first = first_terminal_[at(current_ - ntax_)];
  if (first < 0) first = taxon;
  last_ = last_terminal_ = taxon;
  ++terminals_;
}

void tree_builder::add_subtree(const_tree_span tree, int node) {
  if (node < ntax_) {
    add_terminal(node);
    return;
  }
  const descendant_lists lists = descendants_of(tree, ntax_);
  const int home = current_;
  const int top = new_node(home);
  std::vector<std::pair<int, int>> waiting{{node, top}};  // node there, its copy here
  while (!waiting.empty()) {
    const auto [there, here] = waiting.back();
    waiting.pop_back();
    for (const int d : lists.children(there)) {
      current_ = here;
      if (d < ntax_) {
        add_terminal(d);
      } else {
        waiting.emplace_back(d, new_node(here));
      }
    }
  }
  current_ = home;
  last_ = top;
}

int tree_builder::terminal_near_current() const {
  const int first = first_terminal_[at(current_ - ntax_)];
  return first >= 0 ? first : last_terminal_;
}

void tree_builder::finish(tree_span record, bool include_absent, std::vector<int>* new_numbers) {
  if (include_absent && terminals_ < ntax_) {
    const int new_root = new_node(-1);
    for (int t = 0; t < ntax_; ++t) {
      if (up_[at(t)] < 0) up_[at(t)] = new_root;
    }
    up_[at(ntax_)] = new_root;
  }
  record_from_ancestors(up_, record, ntax_, new_numbers);
}

}  // namespace zeb
