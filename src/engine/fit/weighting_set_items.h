// Weighting sets as `xpiwe [` is told them.
#pragma once

#include <cstdint>
#include <vector>

namespace zeb {

/// The characters of a list that ends at "/", "=" or a bracket, a byte each. Raises the error where
/// the list is empty.
std::vector<std::uint8_t> read_character_list(const char* if_empty);

/// Reads "list", "list =N" or "list /12:3", and more of them after a "[" each, up to the ";". They
/// join the sets there are: returns the set of each character, -1 for none. Error where sets
/// overlap.
std::vector<std::int32_t> read_weighting_sets();
/// A set for each block of the data, which must not overlap with others either.
std::vector<std::int32_t> weighting_sets_of_blocks();

}  // namespace zeb
