// What `lmrealign` is asked to do.
#pragma once

#include <vector>

#include "realign/alignment.h"
#include "realign/tree_alignment.h"

namespace zeb {

struct option_table;

struct realign_request {
  reference_alignment how{.kind = alignment_kind::none};
  bool reference_given = false;
  tree_alignment on_tree{.tree = -1, .cycles = -1, .level = -1};
  int moves = 0;  // random ones
  bool listed = false;
  std::vector<int> characters;  // landmark configurations of enough points, in order
};

/// The arguments up to the semicolon, checked against the data: nothing in them ends the command
/// once it has begun to change the matrix. Warns of characters left out.
realign_request read_realign_request();

}  // namespace zeb
