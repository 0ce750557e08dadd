#include "distances/shared_terminals.h"

#include <algorithm>

namespace zeb {
namespace {

// From the last to the first, the smallest clades of a node come last: they are visited after the
// larger ones when the order is turned around.
std::vector<int> larger_clades_first(const cut_tree& tree) {
  std::vector<int> order, waiting{tree.root()}, children;
  while (!waiting.empty()) {
    const int node = waiting.back();
    waiting.pop_back();
    order.push_back(node);
    children.clear();
    for (const int child : tree.children(node))
      if (child > tree.terminals) children.push_back(child);
    std::ranges::sort(children,
                      [&](int x, int y) { return tree.sizes[at(x)] > tree.sizes[at(y)]; });
    waiting.insert(waiting.end(), children.begin(), children.end());
  }
  std::ranges::reverse(order);
  return order;
}

}  // namespace

shared_terminal_rows::shared_terminal_rows(const cut_tree& a, const cut_tree& b)
    : a_(a), b_(b), order_(larger_clades_first(a)), row_of_(a.sizes.size(), -1) {}

int shared_terminal_rows::free_row() {
  if (free_.empty()) {
    free_.push_back(static_cast<int>(rows_.size()));
    rows_.emplace_back(b_.sizes.size());
  }
  const int row = free_.back();
  free_.pop_back();
  std::ranges::fill(rows_[at(row)], 0);
  return row;
}

void shared_terminal_rows::make_terminal_row(int terminal) {
  const int row = free_row();
  row_of_[at(terminal)] = row;
  int node = terminal;
  for (; node != b_.root(); node = b_.ancestors[at(node)]) rows_[at(row)][at(node)] = 1;
  rows_[at(row)][at(node)] = 1;
}

void shared_terminal_rows::make_row(int node) {
  int sum = -1;
  for (const int child : a_.children(node)) {
    const int row = row_of_[at(child)];
    if (sum < 0) {
      sum = row;
      continue;
    }
    std::ranges::transform(rows_[at(sum)], rows_[at(row)], rows_[at(sum)].begin(), std::plus<>());
    free_.push_back(row);
  }
  row_of_[at(node)] = sum;
}

}  // namespace zeb
