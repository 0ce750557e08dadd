// Continuous characters that two data sets share: on which scales they are, and what differs once
// they are on one.
#pragma once

#include "compare/comparison.h"

namespace zeb {

/// Fills `scales`, with what each differing entry becomes.
void compare_scales(const comparison_task& task, comparison& found);
/// A value of the second set on the scale of the first.
entry_range on_scale(const entry_range& range, const scale_match& scale);

}  // namespace zeb
