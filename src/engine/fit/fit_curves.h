// Functions of homoplasy in the form that searches evaluate; see fit_at.
#pragma once

#include "engine/fit/fit_rules.h"
#include "engine/kernels/kernels.h"

namespace zeb {

/// Sums of homoplasy over a set are in these parts of a step.
constexpr double parts_of_a_step = 1000;

/// The curve of a function by homoplasy, or of a set by the sum of its characters'. Takes memory of
/// the data that are packed.
fit_curve curve_of(const fit_rules& rules, const fit_function& function);
fit_curve curve_of_set(const fit_rules& rules, int set);

}  // namespace zeb
