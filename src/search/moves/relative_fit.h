// How far a rearranged tree is worse in relation to the evidence for and against it.
#pragma once

#include "engine/search_data.h"

namespace zeb {

/// The words that a joining compares: those of the clip and those of the branch it goes to.
struct joined_words {
  const word* clip;
  const word* branch;
};

/// Relative fit difference of two places of one clip. Some characters fit `home` better, and lose F
/// together when the clip goes to `other`; the rest lose nothing or gain, C together. The
/// difference is (F - C) / F, and 0 where no character fits `home` better. The sets are those of
/// the two halves.
double relative_fit_difference(const search_data& data, joined_words home, joined_words other);

}  // namespace zeb
