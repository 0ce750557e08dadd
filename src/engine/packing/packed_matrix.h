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
/// they stay packed as they are, and only the weights change that the kernels read. Steps that all
/// trees share keep the weight of packing, so scores are right up to a constant.
class packed_reweighting_scope {
 public:
  packed_reweighting_scope();
  ~packed_reweighting_scope();
  packed_reweighting_scope(const packed_reweighting_scope&) = delete;
  packed_reweighting_scope& operator=(const packed_reweighting_scope&) = delete;
};

/// Lets go of it when its lock is released. An unlock hook.
void forget_packed_data(const int* tag);

}  // namespace zeb
