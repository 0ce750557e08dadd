// Cells as bits of the words of terminals.
#pragma once

#include <cstdint>

#include "engine/packing/informative_states.h"
#include "engine/search_data.h"

namespace zeb {

/// Writes the cell of one taxon for one entry into its words (`down` of a terminal, all ones
/// before). Returns the unweighted steps that the cell adds on every tree.
int encode_cell(const search_data& data, const pack_entry& entry, const informative_states& states,
                std::uint32_t cell, word* down);

}  // namespace zeb
