// Changes to single cells of the matrix in memory.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zeb {

/// The cell that a text stands for in a character: symbols, with or without brackets, united;
/// numbers and ranges in continuous characters (on the stored scale). Errors name the symbol.
std::uint32_t cell_from_text(int character, std::string_view text);

/// Sets a cell of every flagged taxon in every flagged character. With `recheck`, the step ranges
/// of those characters are computed again.
void set_cells(std::span<const std::uint8_t> characters, std::span<const std::uint8_t> taxa,
               std::string_view states, bool recheck);

/// Turns cells into missing entries: each character is chosen with one probability, each taxon
/// within it with the other. Returns how many cells became missing.
int blank_cells_at_random(double character_probability, double taxon_probability);

/// Shuffles the cells of the flagged taxa by draws from the search generator. Missing cells stay
/// where they are unless `with_missing`. `cells` and `scratch` have one entry per taxon.
void permute_cells(int character, std::span<std::uint32_t> cells,
                   std::span<const std::uint8_t> taxa, bool with_missing, std::span<int> scratch);

}  // namespace zeb
