// What a data set is made of.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/fit/fit_rules.h"
#include "engine/wide/wide_kinds.h"

namespace zeb {

/// Taxa, characters and criterion of a data set. What else packing needs of a character (its cells,
/// additivity, internal steps) it reads from the matrix.
struct packing_request {
  std::vector<std::int32_t> taxa;     // rows of the matrix, at least 3: the outgroup comes first
  std::vector<std::int32_t> weights;  // by character; one of weight 0 is left out
  fit_rules rules;                    // whether and how scores are fits
  bool long_words = true;             // words wider than 32 bits may be used
  std::vector<const wide_kind*> wide_kinds;  // asked in order whether they take a character
  bool operator==(const packing_request&) const = default;
};

/// What the user's settings ask for: the active taxa, the active characters, the criterion in
/// force.
packing_request request_of_settings();

}  // namespace zeb
