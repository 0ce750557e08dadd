// One data set made of two.
#pragma once

#include "compare/combined_data.h"
#include "compare/comparison.h"

namespace zeb {

/// Taxa of the first set keep their order, those of the second set alone follow; so do characters,
/// but for the continuous ones, which come first.
combination combine(const comparison_task& task, const comparison& found);

}  // namespace zeb
