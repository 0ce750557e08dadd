// All stages of a comparison of two data sets.
#pragma once

#include "compare/comparison.h"

namespace zeb {

/// Errors: names are missing. Warns of what can't be compared.
comparison compare_data(const comparison_task& task);

}  // namespace zeb
