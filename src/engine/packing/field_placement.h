// Where fields lie: the weight mode, the filling of partly used words and the places themselves.
#pragma once

#include "engine/packing/packing_plan.h"

namespace zeb {

/// Chooses the weight mode of a plan and moves entries to fill words; then sets `first_field` of
/// all entries and the field counts. `word_weights` allows words of one weight each, which the
/// 32-bit kernels gain from.
void place_fields(packing_plan& plan, bool word_weights);

}  // namespace zeb
