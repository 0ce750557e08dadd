#include "matrix/reading/letter_check.h"

#include <string>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/matrix.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

bool is_informative_cell(std::uint32_t states) {
  return states != matrix.state_mask && states != star_mask(numeric_data, matrix.cell_bytes);
}

}  // namespace

void letter_check::check_row(const row_place& place, int end) {
  typed_.resize(at(matrix.nchar), unknown);
  for (int c = place.first; c < end; ++c) {
    const std::uint32_t states = cell(place.taxon, c);
    const bool has_digit = (states & digit_mask) != 0;
    symbols& typed = typed_[at(c)];
    if (typed == digits || (typed == letters && !has_digit) || !is_informative_cell(states)) {
      continue;
    }
    if (typed == unknown) {
      typed = has_digit ? digits : letters;
      continue;
    }
    error_end("Taxon", taxon_name(place.taxon), "- ch.", c,
              "has a digit, but the states of other taxa are letters\n(for both in one character "
              "give \"nstates num N\" first, N above 10)" +
                  place_in_file());
  }
}

bool has_digits_and_letters() {
  for (int c = 0; c < matrix.nchar; ++c) {
    if (matrix.characters[at(c)].type != numeric_data) continue;
    std::uint32_t found = 0;
    for (int t = 0; t < matrix.ntax; ++t) {
      if (is_informative_cell(cell(t, c))) found |= cell(t, c);
    }
    if ((found & digit_mask) != 0 && (found & ~digit_mask) != 0) return true;
  }
  return false;
}

}  // namespace zeb
