// `mxram`: the size of the arena, and what is in it.
#pragma once

namespace zeb {

/// What other rooms must know of `mxram` when they take memory.
struct memory_settings {
  double data_proportion = 1;      // `mxram *`: multiplier of the estimate; 1 is off
  bool grow_for_data = true;       // `mxram [`: a larger arena when a data set needs it
  bool extra_for_searches = true;  // `mxram +`: 5% more for searches
};
extern memory_settings memory;

}  // namespace zeb
