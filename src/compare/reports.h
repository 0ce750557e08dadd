// What a comparison tells.
#pragma once

#include "compare/comparison.h"

namespace zeb {

/// What was taken for the same though it has other names, and each difference by name.
void tell_details(const comparison_task& task, const comparison& found);
/// Two tables each of the entries that gain and lose states, by character and by taxon.
void tell_scorings(const comparison_task& task, const comparison& found);
/// The counts of differences of each kind.
void tell_counts(const comparison_task& task, const comparison& found);

}  // namespace zeb
