// Which nodes of a whole tree are those of the reduced tree of a sector.
#pragma once

#include <cstdint>
#include <vector>

#include "parallel/jobs/job_table.h"

namespace zeb {

/// By node of the whole tree, which is numbered as the user sees it: the node of the reduced tree;
/// -1 outside of the sector.
std::vector<std::int32_t> nodes_in_sector(const sector_place& place,
                                          const std::vector<tree_node>& whole);

}  // namespace zeb
