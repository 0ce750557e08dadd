// Where the settings of characters that two data sets share differ.
#pragma once

#include "compare/comparison.h"

namespace zeb {

/// Fills `settings` and `chosen_settings`.
void compare_settings(const comparison_task& task, comparison& found);

}  // namespace zeb
