// How the matrix becomes packed words.
#pragma once

#include "engine/packing/packing_request.h"
#include "engine/search_data.h"

namespace zeb {

/// Fills `data` with the taxa and characters of the request, and binds the kernels; the sets of
/// terminals are made, there is no tree. Nothing else of the settings counts, and other data sets
/// stay as they are. Takes its memory from the low stack of the arena: it lives as long as what the
/// caller's scope or lock protects. Errors: characters of kinds that can't be searched, weights
/// that add up to too much, memory.
void prepare_search_data(search_data& data, const packing_request& request);

}  // namespace zeb
