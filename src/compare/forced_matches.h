// Matches that the user settles in a file.
#pragma once

#include <string>
#include <vector>

#include "compare/data_set.h"
#include "compare/matching.h"

namespace zeb {

struct forced_matches {
  std::vector<forced_pair> taxa;
  std::vector<forced_pair> characters;
};
/// Lists of pairs of numbers, of the first and of the second set, after "*taxa" and "*characters".
/// "!" between two numbers: they are different. Errors: the file, the lists, no such number, a
/// number twice.
forced_matches read_forced_matches(const std::string& file, const data_set& first,
                                   const data_set& second);

}  // namespace zeb
