// What the user asks of a comparison.
#pragma once

#include <string>

#include "compare/decisions.h"
#include "compare/trees/tree_comparison.h"

namespace zeb {

/// A list of matches that goes into an array of the user.
struct match_list {
  int array = -1;        // -1: none
  bool of_taxa = false;  // else of characters
  bool closest = false;  // what is most like those without a match; else what matches
};

struct comparison_request {
  bool exact_names = false;    // "!"
  bool ignore_states = false;  // "-"
  bool tell_scores = false;    // ">"
  bool by_taxon = false;       // "*"
  tree_comparison_settings trees;
  decision_request decisions;  // "( )"
  std::string forced_file;     // "f" in the parentheses
  match_list list;
};

/// The options, which stand before the names of the files. Leaves the first name unread.
comparison_request read_comparison_request();

}  // namespace zeb
