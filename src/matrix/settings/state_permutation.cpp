#include "matrix/settings/state_permutation.h"

#include <utility>

#include "base/random.h"
#include "matrix/matrix.h"
#include "matrix/symbols.h"

namespace zeb {

void permute_cells(int character, std::span<std::uint32_t> cells,
                   std::span<const std::uint8_t> taxa, bool with_missing) {
  const bool continuous = matrix.characters[static_cast<std::size_t>(character)].is_continuous;
  const std::uint32_t missing = continuous ? missing_continuous : matrix.state_mask;
  std::vector<std::size_t> places;
  for (std::size_t t = 0; t < cells.size(); ++t) {
    if (taxa[t] && (with_missing || cells[t] != missing)) places.push_back(t);
  }
  for (std::size_t left = places.size(); left > 1; --left) {
    const auto other = static_cast<std::size_t>(draw()) % left;
    std::swap(cells[places[left - 1]], cells[places[other]]);
  }
}

}  // namespace zeb
