// Characters whose states are letters, and digits that don't belong there.
//
// In alphanumeric data letters go on where the digits end: a character may have the states 9, A and
// B. A character whose first informative cell is a letter is one of letters, in which a digit is
// taken for a slip, unless `nstates num N`, with N above 10, has made of both one scale.
#pragma once

#include <cstdint>
#include <vector>

#include "matrix/reading/cell_reader.h"

namespace zeb {

class letter_check {
 public:
  /// Looks at the cells of a row of alphanumeric data from `place.first` to `end` - 1; rows come in
  /// the order of the input. Error at a digit in a character of letters.
  void check_row(const row_place& place, int end);

 private:
  enum symbols : std::uint8_t { unknown, digits, letters };
  std::vector<symbols> typed_;  // by character, from its first informative cell
};

/// Does an alphanumeric character of the matrix have both? In some order of the taxa it is refused.
bool has_digits_and_letters();

}  // namespace zeb
