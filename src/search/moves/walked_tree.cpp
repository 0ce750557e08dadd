#include "search/moves/walked_tree.h"

#include "base/indices.h"

namespace zeb {

walked_tree::walked_tree(std::span<const std::int32_t> tree, int n)
    : first(tree.size(), -1), second(tree.size(), -1) {
  for (int v = 1; v < static_cast<int>(tree.size()); ++v) {
    if (v == n) continue;
    const std::size_t up = at(tree[at(v)]);
    (first[up] < 0 ? first[up] : second[up]) = v;
  }
  std::vector<std::int32_t> stack = {first[at(n)]};
  while (!stack.empty()) {
    const std::int32_t v = stack.back();
    stack.pop_back();
    preorder.push_back(v);
    if (v < n) continue;
    stack.push_back(second[at(v)]);
    stack.push_back(first[at(v)]);
  }
}

std::vector<std::int32_t> walked_tree::terminals_of(int clade, int n) const {
  std::vector<std::int32_t> terminals;
  std::vector<std::int32_t> stack = {clade};
  while (!stack.empty()) {
    const std::int32_t v = stack.back();
    stack.pop_back();
    if (v < n) {
      terminals.push_back(v);
      continue;
    }
    stack.push_back(second[at(v)]);
    stack.push_back(first[at(v)]);
  }
  return terminals;
}

}  // namespace zeb
