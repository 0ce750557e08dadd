#include "distances/moves/forest_search.h"

#include <algorithm>

namespace zeb {
namespace {

using pieces_list = std::vector<std::vector<int>>;

// Lower bounds cost about as much as going on, so they are asked for where much may be left to do.
constexpr int cuts_worth_bounding = 3;

}  // namespace

int cuts_needed(paired_trees trees) {
  // Each conflict asks for a cut of one of the sisters, or for all cuts between them: where one of
  // each is made, the forest needs one less than before, if not less still.
  int needed = 0;
  for (auto c = trees.next_conflict(); c.first >= 0; c = trees.next_conflict()) {
    ++needed;
    if (c.between.size() == 1) {
      trees.cut(c.between[0]);
      continue;
    }
    trees.cut(c.first);
    trees.cut(c.second);
    if (!c.between.empty()) trees.cut(c.between[0]);
  }
  return needed;
}

paired_trees forest_search::random_run(paired_trees trees) {
  for (auto c = trees.next_conflict(); c.first >= 0; c = trees.next_conflict()) {
    const auto q = static_cast<int>(c.between.size());
    if (q == 1) {
      trees.cut(c.between[0]);
      continue;
    }
    // The more cuts between the sisters would take, the less likely they are chosen.
    const int choice = generator_.draw() % (c.apart ? 2 : 2 * q + 1);
    if (!c.apart && choice == 2 * q) {
      for (const int node : c.between) trees.cut(node);
    } else {
      trees.cut(choice % 2 == 0 ? c.first : c.second);
    }
  }
  return trees;
}

forest_search::answer forest_search::search_after(paired_trees trees,
                                                  const std::vector<int>& cut_off, int most,
                                                  pieces_list& pieces) {
  for (const int node : cut_off) trees.cut(node);
  return search(trees, most, pieces);
}

forest_search::answer forest_search::search(paired_trees& trees, int most, pieces_list& pieces) {
  if (trees.cuts() > most) return answer::no;
  const paired_trees::conflict c = trees.next_conflict();
  if (c.first < 0) {
    pieces = trees.pieces();
    return answer::yes;
  }
  const int left = most - trees.cuts();
  if (left == 0) return answer::no;
  if (--steps_ < 0) return answer::given_up;
  if (steps_ % 256 == 0) poll_();
  if (left >= cuts_worth_bounding && cuts_needed(trees) > left) return answer::no;
  // Where one node hangs between the sisters, cutting it is never worse than cutting one of them.
  std::vector<std::vector<int>> ways;
  if (c.between.size() != 1) ways = {{c.first}, {c.second}};
  if (!c.between.empty() && static_cast<int>(c.between.size()) <= left) ways.push_back(c.between);
  for (const std::vector<int>& way : ways) {
    const answer found = search_after(trees, way, most, pieces);
    if (found != answer::no) return found;
  }
  return answer::no;
}

forest_search::answer forest_search::exists(const binary_tree& a, const binary_tree& b, int most,
                                            pieces_list& pieces) {
  steps_ = effort_.steps;
  paired_trees trees(a, b);
  return search(trees, most, pieces);
}

found_forest forest_search::best(const binary_tree& a, const binary_tree& b) {
  found_forest out;
  const paired_trees start(a, b);
  out.at_least = cuts_needed(start);
  for (int run = 0; run < std::max(1, effort_.replications); ++run) {
    poll_();
    const paired_trees end = random_run(start);
    if (out.pieces.empty() || end.cuts() < out.cuts()) out.pieces = end.pieces();
    if (out.is_exact()) return out;
  }
  pieces_list pieces;
  while (!out.is_exact()) {
    const answer found = exists(a, b, out.at_least, pieces);
    if (found == answer::given_up) break;
    if (found == answer::yes)
      out.pieces = pieces;
    else
      ++out.at_least;
  }
  return out;
}

}  // namespace zeb
