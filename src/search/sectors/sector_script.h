// Sectors searched by commands of the user.
//
// Each command finds the sector as if it was all the data there are: as the matrix, with what
// leaves the sector as taxa, and as the tree in memory. Searches work on the reduced data, so that
// scores are those of the whole tree; what commands tell is silenced. All settings, and the data,
// the trees and the constraints of the user, are back when the commands are done, or fail.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/packing/reduced_data.h"
#include "search/search_context.h"

namespace zeb {

/// The best of the trees that the commands leave in memory.
struct script_result {
  std::vector<std::int32_t> tree;  // of the sector; empty: none
  double score = unknown_score;
};

/// Runs commands on a sector of the tree in work of `outer`, whose reduced data are those of
/// `inner`. `track`: the user may ask which nodes of the whole tree are in it.
script_result run_sector_script(search_context& outer, search_context& inner,
                                const tree_sector& sector, const std::string& commands, bool track);

}  // namespace zeb
