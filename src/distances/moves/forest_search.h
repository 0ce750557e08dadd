// The fewest pieces that two binary trees can be cut into so that the pieces are the same trees and
// lie apart in both.
#pragma once

#include <functional>
#include <vector>

#include "base/random.h"
#include "distances/moves/paired_trees.h"

namespace zeb {

struct forest_effort {
  int replications = 50;  // random runs
  int steps = 200000;     // of the exact search, for each part of the trees
};

/// Pieces of terminals, one more than there are cuts.
struct found_forest {
  std::vector<std::vector<int>> pieces;
  int at_least = 0;  // cuts
  int cuts() const { return static_cast<int>(pieces.size()) - 1; }
  bool is_exact() const { return at_least == cuts(); }
};

class forest_search {
 public:
  /// `poll` is called now and then.
  forest_search(const forest_effort& effort, random_generator& generator,
                std::function<void()> poll)
      : effort_(effort), generator_(generator), poll_(std::move(poll)) {}

  /// Random runs give the bound from above, cutting all that a conflict may ask for that from
  /// below; between them numbers of cuts are tried one after the other, all ways, as long as the
  /// steps last.
  found_forest best(const binary_tree& a, const binary_tree& b);
  enum class answer { no, yes, given_up };
  /// Is a forest with at most `most` cuts there? Its pieces are then in `pieces`.
  answer exists(const binary_tree& a, const binary_tree& b, int most,
                std::vector<std::vector<int>>& pieces);

 private:
  paired_trees random_run(paired_trees trees);
  answer search(paired_trees& trees, int most, std::vector<std::vector<int>>& pieces);
  answer search_after(paired_trees trees, const std::vector<int>& cut_off, int most,
                      std::vector<std::vector<int>>& pieces);

  const forest_effort& effort_;
  random_generator& generator_;
  std::function<void()> poll_;
  int steps_ = 0;
};

/// A number of further cuts that no forest can do without.
int cuts_needed(paired_trees trees);

}  // namespace zeb
