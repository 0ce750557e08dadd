// What users write after `bsupport`, read for the command and for the function `bremlist`.
#pragma once

#include <cstdint>
#include <vector>

#include "supports/bremer.h"

namespace zeb {

struct bremer_request {
  bremer_settings how;
  int approximate = -1;                // ":T": the tree whose branches are looked at; -1 none
  double spared = 0;                   // ":T/P": share of the groups that may be left out
  std::vector<std::uint8_t> trees;     // by number
  std::vector<std::uint8_t> excluded;  // by taxon
  int n_trees = 0;
};

/// Reads the arguments up to ";", which stays unread. Errors where they can't go together.
bremer_request read_bremer_request();

}  // namespace zeb
