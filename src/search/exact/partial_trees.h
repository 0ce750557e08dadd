// The partial trees of an enumeration, one of each number of taxa, and what is known of the taxa
// that aren't in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "search/exact/conflicts.h"
#include "search/exact/growing_tree.h"

namespace zeb {

struct partial_tree {
  /// With `size` taxa, of characters of `words` words in packed sets.
  partial_tree(int size, std::size_t words, std::size_t conflict_words);

  std::vector<std::int32_t> rest;  // taxa to come
  // By taxon of `rest`, `room` entries each: branches where it may still go, and their number.
  std::vector<std::int32_t> places;
  std::vector<int> place_count;
  std::size_t room = 0;
  std::span<word> present;  // states in the tree
  std::span<word> charged;  // fields that the bound from conflicts charges
  std::span<word> added;    // the taxon added last, its new states taken as missing
  std::vector<character_conflicts::bits> unspoilt;  // characters without homoplasy
  double conflicts = 0;                             // the bound that these give

  std::int32_t* places_of(std::size_t which) { return places.data() + which * room; }
};

/// Each taxon may go to every branch of the tree as it stands.
void list_all_places(const search_data& data, const growing_tree& tree, partial_tree& now);
/// Taxon `which` of `now` is to go to a branch. In the tree that results the others may go where
/// they may here, and beside the new taxon if they may go where that goes.
void hand_places_down(partial_tree& now, std::size_t which, std::int32_t branch,
                      const growing_tree& tree, partial_tree& next);

}  // namespace zeb
