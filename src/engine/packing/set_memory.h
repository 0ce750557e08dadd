// Memory of a data set.
#pragma once

#include "engine/search_data.h"

namespace zeb {

/// Takes the memory of a data set whose taxa, groups and words are known: tree arrays, node sets,
/// weight tables and scratch, from the low stack of the arena.
void allocate_search_data(search_data& data);
/// Takes the memory of the undo log, once all sets are known.
void allocate_undo(search_data& data);

}  // namespace zeb
