// Selectors of characters for `xgroup`, and what the scoring floors supply for them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zeb {

enum class tree_measure { steps, homoplasy, score };
/// Fills the values of every character (`nchar`) on a tree of the buffer; raises the error for a
/// tree that isn't there. Steps and homoplasy are unweighted, in units of the data.
using character_measurer = void (*)(tree_measure measure, int tree, std::span<double> values);
/// Plugs in the measures on trees, at start-up. Without them the selectors say so.
void set_character_measurer(character_measurer measurer);

/// Carries out the selector named `word`: "len", "homo", "score", "min", "max", "type". False for
/// any other word.
bool select_characters(std::string_view word, std::span<std::uint8_t> selected);

}  // namespace zeb
