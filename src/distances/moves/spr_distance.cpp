#include "distances/moves/spr_distance.h"

#include <algorithm>

#include "base/indices.h"

namespace zeb {
namespace {

constexpr std::size_t roots_tried_hard = 5;

cut_tree rooted_at(const cut_tree& tree, int terminal) {
  std::vector<tree_node> record = tree.ancestors;
  reroot_tree(record, tree.terminals, terminal);
  return {record, tree.terminals};
}

spr_distance rooted_distance(const cut_tree& a, const cut_tree& b, const forest_effort& effort,
                             random_generator& generator, const std::function<void()>& poll) {
  resolved_pair trees = resolve_alike(a, b);
  spr_distance out;
  out.forest = smallest_forest(cut_tree(trees.a, a.terminals), cut_tree(trees.b, a.terminals),
                               effort, generator, poll);
  out.at_most = out.forest.moves();
  // Other resolutions may need less; trees that contradict each other need one.
  out.at_least = trees.changed ? std::min(1, out.at_most) : out.forest.at_least;
  out.resolved = trees.changed;
  out.from = std::move(trees.a);
  out.to = std::move(trees.b);
  return out;
}

}  // namespace

spr_distance count_spr_moves(const cut_tree& a, const cut_tree& b, bool unrooted,
                             const forest_effort& effort, random_generator& generator,
                             const std::function<void()>& poll) {
  if (!unrooted) return rooted_distance(a, b, effort, generator, poll);
  struct tried_root {
    int terminal, at_most, at_least;
  };
  std::vector<tried_root> tried;
  const forest_effort light{.replications = 3, .steps = 1000};
  for (int t = 0; t < a.terminals; ++t) {
    const spr_distance d =
        rooted_distance(rooted_at(a, t), rooted_at(b, t), light, generator, poll);
    tried.push_back({t, d.at_most, d.at_least});
  }
  std::ranges::stable_sort(tried, {}, &tried_root::at_most);
  spr_distance best;
  best.at_most = a.terminals;
  for (std::size_t i = 0; i < std::min(tried.size(), roots_tried_hard); ++i) {
    const int t = tried[i].terminal;
    spr_distance d = rooted_distance(rooted_at(a, t), rooted_at(b, t), effort, generator, poll);
    tried[i].at_least = d.at_least;
    if (d.at_most < best.at_most) best = std::move(d);
  }
  // Trees one move apart are so with any root outside of what moves; else nothing is known.
  const auto least = std::ranges::min_element(tried, {}, &tried_root::at_least);
  best.at_least = std::min({best.at_most, least->at_least, 2});
  return best;
}

double spr_similarity(int moves, int terminals, bool unrooted) {
  const int most = terminals - (unrooted ? 3 : 2);
  return most > 0 ? 1 - static_cast<double>(moves) / most : 1;
}

}  // namespace zeb
