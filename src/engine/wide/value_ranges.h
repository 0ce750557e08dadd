// Continuous characters as wide ones: at each node a range of values (Farris 1970), as additive
// characters with as many thresholds as there are values.
//
// A range is a word, the lowest value in one half, the highest in the other, in thousandths. `down`
// is where the ranges of the descendants overlap, or what lies between them, which is the step;
// with it goes how far values are at most as costly as the descendants make them, by which `final`
// is exact. `branch` spans the ends of the branch, a cluster spans its branches.
#pragma once

#include "engine/wide/wide_kinds.h"

namespace zeb {

extern const wide_kind value_ranges;

}  // namespace zeb
