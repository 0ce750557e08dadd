#include "support/tree_text.h"

#include <algorithm>
#include <cctype>

namespace zeb_test {
namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

}  // namespace

std::vector<std::int32_t> tree_of(const std::string& text, int ntax) {
  std::vector<std::int32_t> tree(at(2 * ntax - 1), 0);
  int next = ntax;
  int current = -1;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '(') {
      if (next > ntax) tree[at(next)] = current;
      current = next++;
    } else if (text[i] == ')') {
      current = current == ntax ? -1 : tree[at(current)];
    } else if (std::isdigit(static_cast<unsigned char>(text[i]))) {
      int number = 0;
      for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i)
        number = number * 10 + (text[i] - '0');
      --i;
      tree[at(number)] = current;
    }
  }
  tree[at(ntax)] = next;
  return tree;
}

std::vector<std::int32_t> random_tree(int ntax, std::mt19937& random, int polytomy, int absent) {
  const auto chance = [&](int percent) { return static_cast<int>(random() % 100) < percent; };
  std::vector<std::int32_t> tree(at(2 * ntax - 1), 0);
  tree[0] = tree[1] = ntax;
  int next = ntax + 1;
  std::vector<int> nodes{0, 1};
  for (int t = 2; t < ntax; ++t) {
    if (chance(absent)) continue;
    const int target = nodes[random() % nodes.size()];
    if (chance(polytomy)) {
      tree[at(t)] = tree[at(target)];
    } else {
      const int joint = next++;
      tree[at(joint)] = tree[at(target)];
      tree[at(target)] = joint;
      tree[at(t)] = joint;
      nodes.push_back(joint);
    }
    nodes.push_back(t);
  }
  tree[at(ntax)] = next;
  return tree;
}

std::vector<std::int32_t> caterpillar(int ntax) {
  std::vector<std::int32_t> tree(at(2 * ntax - 1), 0);
  for (int t = 0; t < ntax; ++t) tree[at(t)] = std::min(ntax + t, 2 * ntax - 2);
  for (int n = ntax + 1; n < 2 * ntax - 1; ++n) tree[at(n)] = n - 1;
  tree[at(ntax)] = 2 * ntax - 1;
  return tree;
}

}  // namespace zeb_test
