// What the last comparison counted, for expressions.
#pragma once

#include "compare/comparison.h"

namespace zeb {

struct last_comparison_state {
  bool present = false;
  comparison_counts counts;
};
/// Written in last_comparison.cpp only.
extern last_comparison_state last_comparison;

void note_comparison(const comparison_counts& counts);

}  // namespace zeb
