// Which kernels work on a data set, and the tables that they read.
#pragma once

#include "engine/search_data.h"

namespace zeb {

/// The weights of all fields together may not be above this.
constexpr std::int64_t largest_weight_sum = 1'000'000'000;

/// How the kernels add up the data of this set.
scoring_mode mode_of(const search_data& data);
/// Fills the kernel slots from the mode and the processor, and the kernels' weight tables from the
/// weights of the field records (or `word_weight`), so it is to be called after these change too.
/// Raises an error if the weights of all fields add up to more than 1,000,000,000. Under implied
/// weights the counters are put to no steps: a full pass must follow.
void bind_kernels(search_data& data);
/// The same with kernels of a width that the processor has.
void bind_kernels(search_data& data, int width);
/// Picks the mode for new weights in the field records (`uniform_mode` when all are 1, else
/// `per_char_mode`) and binds kernels of the width that they have. For perturbed weights (ratchet,
/// resampling). Weights of wide characters are read where they stand.
void weights_changed(search_data& data);

}  // namespace zeb
