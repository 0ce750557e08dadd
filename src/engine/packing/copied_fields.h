// Characters copied from one packed data set to another, words to words: the matrix isn't looked
// at.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// Entries of `outer` that stay, in their order, and the groups laid out for them, where fields are
/// in the order that they had.
/// `kept`: a byte by entry.
void place_entries(search_data& inner, const search_data& outer,
                   const std::vector<std::uint8_t>& kept);
/// Their fields and the sets of all terminals, for which `terminals` points to words of `outer`.
/// The memory of `inner` is there.
void copy_packed_characters(search_data& inner, const search_data& outer,
                            const std::vector<std::uint8_t>& kept,
                            std::span<const word* const> terminals);
/// Wide characters, all or those wanted, and memory for their sets.
void copy_wide_parts(search_data& inner, const search_data& outer,
                     const std::function<bool(const wide_character&)>& wanted = {});
/// Numbers of the elements that are kept.
std::vector<std::int32_t> numbers_of(const std::vector<std::uint8_t>& kept);

}  // namespace zeb
