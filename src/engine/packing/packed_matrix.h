// The packed data of the user's settings, kept until data or settings change.
#pragma once

#include <vector>

#include "engine/packing/packing_request.h"
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

/// As long as one lives, reduced data are the packed data of `matrix`, whose taxa are their
/// terminals, in order. Settings that the words depend on can't change meanwhile: an error.
class part_data_scope {
 public:
  explicit part_data_scope(search_data& part);
  ~part_data_scope();
  part_data_scope(const part_data_scope&) = delete;
  part_data_scope& operator=(const part_data_scope&) = delete;

 private:
  search_data* outer_part_;
  packing_request made_for_;
  std::vector<std::int32_t> settings_;
};

/// Lets go of it when its lock is released. An unlock hook.
void forget_packed_data(const int* tag);

}  // namespace zeb
