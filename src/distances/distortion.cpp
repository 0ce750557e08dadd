#include "distances/distortion.h"

#include <algorithm>
#include <vector>

#include "base/indices.h"

namespace zeb {
namespace {

/// Steps of a character of two states, by terminal, on a tree with hard polytomies.
int steps_on(const cut_tree& tree, const std::vector<char>& states) {
  struct costs {
    int zero = 0, one = 0;  // of the clade, with that state at its node
  };
  std::vector<costs> of(tree.sizes.size());
  for (int t = 0; t < tree.terminals; ++t)
    (states[at(t)] ? of[at(t)].zero : of[at(t)].one) = tree.terminals;  // more than any number
  for (auto node = tree.outward.rbegin(); node != tree.outward.rend(); ++node)
    for (const int child : tree.children(*node)) {
      of[at(*node)].zero += std::min(of[at(child)].zero, of[at(child)].one + 1);
      of[at(*node)].one += std::min(of[at(child)].one, of[at(child)].zero + 1);
    }
  return std::min(of[at(tree.root())].zero, of[at(tree.root())].one);
}

}  // namespace

double distortion_coefficient(const cut_tree& from, const cut_tree& on) {
  double spared = 0, most = 0;
  std::vector<char> states;
  for (const int node : from.outward) {
    const int size = from.sizes[at(node)];
    const int on_a_bush = std::min(size, from.terminals - size);
    if (on_a_bush < 2) continue;
    states.assign(at(from.terminals), 0);
    std::vector<int> waiting{node};
    while (!waiting.empty()) {
      const int n = waiting.back();
      waiting.pop_back();
      if (n < from.terminals) states[at(n)] = 1;
      for (const int child : from.children(n)) waiting.push_back(child);
    }
    spared += on_a_bush - steps_on(on, states);
    most += on_a_bush - 1;
  }
  return most > 0 ? spared / most : 1;
}

}  // namespace zeb
