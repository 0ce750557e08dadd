// The packed data of the user's settings, kept until data or settings change.
#pragma once

#include "engine/search_data.h"

namespace zeb {

/// The data set of the settings in force; packed if it isn't there yet, else as it stands. It lies
/// in the arena under the optimisation lock, and a change of what it was made of drops it: no
/// longer good then. `silent` leaves the warning about little memory out. Errors: no data, fewer
/// than 3 active taxa, and those of packing.
search_data& packed_matrix(bool silent);

/// While one lives, characters may weigh a multiple of what the data were packed with, or nothing:
/// the packed data stay, and searches get a sample of them (`sampled_data.h`).
class packed_sampling_scope {
 public:
  packed_sampling_scope();
  ~packed_sampling_scope();
  packed_sampling_scope(const packed_sampling_scope&) = delete;
  packed_sampling_scope& operator=(const packed_sampling_scope&) = delete;
};

/// Lets go of it when its lock is released. An unlock hook.
void forget_packed_data(const int* tag);

}  // namespace zeb
