// Jobs whose tasks search sectors of a tree.
#pragma once

#include <vector>

#include "parallel/jobs/spawning.h"

namespace zeb {

struct sector_request {
  enum class way { random, exclusive, around, between };
  way how = way::random;
  int size = 0;        // random: nodes; exclusive: number of sectors
  bool loose = false;  // exclusive: sizes partly drawn
  int node = 0;        // around it; or with its immediate descendants
  int distance = 0;
  int above = 0;              // polytomies larger than this
  int below = 0;              // and smaller than this; 0 no limit
  std::vector<int> trees;     // the tree, or a set to draw from
  std::vector<int> launched;  // only these of the exclusive sectors; empty: all
};

/// Reads what stands after `sector`.
sector_request read_sector_request();
/// Cuts the sectors and makes data and a tree for each; sets the number of tasks.
void make_sector_job(const sector_request& wanted, job_request& request);
/// How many exclusive sectors there would be: the tasks to ask for.
int exclusive_parts(const sector_request& wanted);

/// Puts the trees that came from the tasks of a sector job into whole trees.
void place_sector_results(const job_record& job, std::vector<std::vector<tree_node>>& best_by_task);

}  // namespace zeb
