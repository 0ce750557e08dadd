// Many data sets joined into one, and characters of one name joined into one.
#pragma once

#include <span>
#include <vector>

#include "compare/data_set.h"

namespace zeb {

/// The taxa of all sets, by name; the characters of one set after those of another, continuous ones
/// first, in the blocks that they were in. Trees of each set follow those of the one before.
data_set merge_data(std::span<const data_set> sets);

/// Joins characters of the same name and type into the one of the lowest number: entries that
/// differ become polymorphisms. Returns how many have gone. States are those of the same name where
/// they have names, else those of the same number. The one that stays is in the groups of all.
/// Warns of states that don't fit, and of costs that differ, which go.
int merge_characters_of_one_name(data_set& data);

}  // namespace zeb
