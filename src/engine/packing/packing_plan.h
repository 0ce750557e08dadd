// What the words of a data set will hold, before any memory is taken.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "engine/packing/informative_states.h"
#include "engine/search_data.h"

namespace zeb {

struct packing_plan {
  std::vector<pack_entry> entries;         // in matrix order
  std::vector<informative_states> states;  // by entry
  std::int64_t base_steps = 0;             // weighted steps of characters dropped as constant
  double base_fit = 0;                     // implied weights: weighted fit of those characters
  std::vector<double> base_set_sums;       // by set: what they add to its sum
  bool implied_on = false;
  bool uniform_mode = true;
  bool per_char_mode = false;
  std::vector<std::int32_t> word_weight;  // word-weight mode: a weight for each word
  std::array<int, packing_groups> field_count{};

  /// The characters of one kind that the words don't hold; their places are still to be given.
  struct wide_share {
    const wide_kind* kind;
    std::vector<wide_character> characters;
  };
  std::vector<wide_share> wide;
  double base_wide_cost = 0;    // of those that are the same on all trees, in units of the score
  bool has_landmarks = false;   // left out here: whole trees are asked for them
  bool has_continuous = false;  // some of those score in fractions of a unit, whatever they cost
};

}  // namespace zeb
