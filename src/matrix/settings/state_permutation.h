// Shuffles the cells of a character among taxa.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// Shuffles the cells of the flagged taxa by draws from the search generator. Missing cells stay
/// where they are unless `with_missing`. `cells` has one entry per taxon.
void permute_cells(int character, std::span<std::uint32_t> cells,
                   std::span<const std::uint8_t> taxa, bool with_missing);

}  // namespace zeb
