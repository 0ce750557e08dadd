// Memory of a data set.
#pragma once

#include <array>

#include "engine/search_data.h"

namespace zeb {

/// Gives each group the words that so many fields take, in whole blocks.
void lay_out_groups(search_data& data, const std::array<int, packing_groups>& fields);
/// Makes all fields padding.
void empty_field_records(search_data& data);
/// Takes the memory of a data set whose taxa, groups and words are known: tree arrays, node sets,
/// weight tables and scratch, from the low stack of the arena.
void allocate_search_data(search_data& data);
/// Takes the memory of the undo log, once all sets are known.
void allocate_undo(search_data& data);

}  // namespace zeb
