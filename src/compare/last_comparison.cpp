#include "compare/last_comparison.h"

namespace zeb {

last_comparison_state last_comparison;

void note_comparison(const comparison_counts& counts) { last_comparison = {true, counts}; }

}  // namespace zeb
