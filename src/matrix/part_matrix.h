// A matrix of other taxa in the place of the data in memory, for a while.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "matrix/matrix.h"

namespace zeb {

/// A row of such a matrix: a cell for each character of the data.
struct part_taxon {
  std::string name;
  std::vector<std::uint32_t> cells;
};

/// As long as one lives, `matrix` has these taxa (at least 4, all active, the first one the
/// outgroup) with the characters of the data, whose settings are copies. No locks may be taken or
/// released meanwhile. Its memory is the arena's low stack, which the caller takes back.
class part_matrix_scope {
 public:
  explicit part_matrix_scope(std::span<const part_taxon> taxa);
  ~part_matrix_scope();
  part_matrix_scope(const part_matrix_scope&) = delete;
  part_matrix_scope& operator=(const part_matrix_scope&) = delete;

 private:
  matrix_state whole_;
};

}  // namespace zeb
