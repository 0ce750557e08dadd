// The fields of packed words, one by one: what the bounds of the exact search are made of.
#pragma once

#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// One field of the packed words whose cells are all of a single state, or missing.
struct single_state_field {
  int word_number = 0;
  int shift = 0;      // of its lowest bit
  word mask = 0;      // its bits, shifted
  int record = 0;     // number in arrays by field, as `search_data::field_weight`
  int counter = 0;    // implied weights: of its character
  int states = 0;     // that occur
  bool alone = true;  // implied weights: what a step costs depends on this field only
};

/// All such fields that any tree can cost something, in the order of the words. A cell with all
/// states that occur is as good as missing; a field with other polymorphic cells is left out, since
/// what these cost depends on where they go.
std::vector<single_state_field> single_state_fields(const search_data& data);

/// The cell of a terminal: a single bit, or 0 for missing.
inline word single_state(const search_data& data, const single_state_field& f, int terminal) {
  const word cell = data.sets[static_cast<std::size_t>(terminal)].down[f.word_number] & f.mask;
  return (cell & (cell - 1)) == 0 ? cell : 0;
}

}  // namespace zeb
