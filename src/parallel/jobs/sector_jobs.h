// Jobs whose tasks search sectors of a tree: each gets a reduced data set, in which all that leaves
// its sector is a terminal with the states that the rest of the tree gives it.
#pragma once

#include <vector>

#include "parallel/jobs/sector_requests.h"
#include "parallel/jobs/spawning.h"

namespace zeb {

/// Cuts the sectors and makes data and a tree for each; sets the number of tasks. Errors: the tree
/// isn't dichotomous, or lacks taxa; too few taxa.
void make_sector_job(const sector_request& wanted, job_request& request);
/// How many exclusive sectors there would be: the tasks to ask for.
int exclusive_parts(int count, bool loose, int tree);

}  // namespace zeb
