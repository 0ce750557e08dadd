// The replicates of a resampling: for each the characters are drawn anew, a search looks for the
// best trees of that sample, and their strict consensus stays.
//
// A replicate is a function of its seed, the data and the settings. The seeds are drawn before
// anything else, so that it makes no difference in which order replicates are done.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "supports/resampling/sampling.h"
#include "trees/tree_record.h"

namespace zeb {

struct resampling_task {
  sampling how;
  int replications = 100;
  std::string search;                  // commands; empty: the default search
  bool any_command = false;            // ... of almost any kind
  std::vector<std::uint8_t> left_out;  // taxa that no consensus has, by taxon
};

/// The consensus of one sample.
struct replicate {
  std::vector<tree_node> tree;
  int kept = 0, changed = 0;  // characters; 0 in bootstraps
};

struct replicates {
  std::vector<replicate> done;
  int wanted = 0;
  int without_trees = 0;  // counted as trees without groups
  bool interrupted = false;
  bool weight_limit = false;  // some weights would have been too large, and stayed at the limit
};

/// Does the replicates, or as many as there is time for; one that is cut short isn't counted. What
/// is done when an error of the search passes through stays in `out`. Weights, trees, settings and
/// the results of former searches are then what they were.
void run_replicates(const resampling_task& task, replicates& out);

/// "Resampling", "Jacknifing", "Bootstrapping".
const char* activity_of(sampling_scheme scheme);

}  // namespace zeb
