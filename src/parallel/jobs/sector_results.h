// What becomes of the trees that tasks found for their sectors.
#pragma once

#include <vector>

#include "parallel/jobs/job_table.h"

namespace zeb {

/// What a task of a sector job sent.
struct sector_result {
  std::vector<tree_node> tree;  // empty: none came
  polytree_wish polytree = polytree_wish::unsaid;
};

/// Puts the trees of the sectors, by task, into whole trees, which are added to those in memory.
/// Where only some of the exclusive sectors were searched, each tree has no groups but those of its
/// sector, and comes twice, so that a consensus of frequency differences joins them.
void place_sector_results(const job_record& job, const std::vector<sector_result>& found_by_task);

}  // namespace zeb
