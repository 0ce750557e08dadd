// The settings of `mxram`, and what it must know of the data set.
#pragma once

namespace zeb {

/// The settings of `mxram`.
struct memory_settings {
  double data_proportion = 1;      // `mxram *`: multiplier of the estimate; 1 is off
  bool grow_for_data = true;       // `mxram [`: a larger arena when a data set needs it
  bool extra_for_searches = true;  // `mxram +`: 5% more for searches
};
extern memory_settings memory;

/// The data set in memory, for the breakdown of `mxram`. Registered at start-up.
struct data_description {
  int ntax = 0, nchar = 0, nstates = 0;
  int maxtrees = 0;
  int vault_trees = 0;  // that the vault has room for
};
void set_data_describer(data_description (*describe)());
/// Drops the data set, before the arena is created anew. Registered at start-up.
void set_data_dropper(void (*drop)());

}  // namespace zeb
