// The consensus of a data set, estimated from few independent and superficial searches. Groups with
// real support are found by most of them, however poor the single trees (compare Farris and others
// 1996, who take such quick searches for each resampled data set).
#pragma once

#include <vector>

#include "search/drivers/mult.h"
#include "trees/tree_record.h"

namespace zeb {

struct quick_consensus_settings {
  int replications = 15;
  int cut = 80;  // per cent of the trees that a group must exceed, 50 to 100
  int swapper = mult_settings::tbr;
};
extern quick_consensus_settings quick_consensus;  // written by `qnelsen`

/// One tree of each replication, in matrix numbering; the tree buffer isn't touched. Fewer when
/// interrupted.
std::vector<std::vector<tree_node>> replicated_trees(const quick_consensus_settings& options);

}  // namespace zeb
