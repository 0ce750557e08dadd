// Landmark configurations that two data sets share.
#pragma once

#include "compare/comparison.h"

namespace zeb {

/// Fills `landmarks`.
void compare_landmarks(const comparison_task& task, comparison& found);

}  // namespace zeb
