// Changes that every most parsimonious reconstruction has at the same place: what characterises the
// groups and the terminals of a tree.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "mapping/common_groups.h"
#include "mapping/node_states.h"

namespace zeb {

/// On the branch below a node: its states and its ancestor's have none in common.
struct apomorphy {
  int node = 0;
  int character = 0;
  node_values from;
  node_values to;
  bool homoplastic = false;  // the character has more steps on the tree than it needs
};
/// By node, then character; no landmarks, polytomies hard. A difference between the outgroup and
/// all others could have arisen on either side of the root: it counts only where the character's
/// costs or root states tell.
std::vector<apomorphy> find_apomorphies(const tree_shape& shape,
                                        const std::vector<int>& characters);

/// Those that the equivalent groups of all trees have (`changes` by tree), by node of the
/// consensus, then character; where the states differ between the trees an end has all of them.
std::vector<apomorphy> common_apomorphies(const common_groups& common,
                                          std::span<const std::vector<apomorphy>> changes);

/// "0 --> 1"; an end with several states has a "?".
std::string change_text(const apomorphy& change, const char* arrow = " --> ");

}  // namespace zeb
