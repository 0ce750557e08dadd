// What the costs of a character mean for optimisation: which states it has, which cells, and
// whether it may be optimised as something cheaper than a table of costs.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "matrix/matrix.h"

namespace zeb {

/// The states that exist are numbered anew from 0, without holes, in order.
struct character_costs {
  std::vector<int> states;           // by new number: the state of the matrix
  std::vector<std::int32_t> cost;    // by state before, then state after
  std::vector<std::uint32_t> cells;  // by taxon, new numbers; 0: says nothing
  std::uint32_t observed = 0;        // states of the cells
  std::uint32_t root_states = 0;     // that the root may have; 0: any

  bool asymmetric = false;  // some cost differs from its reverse
  int least_cost = 1;       // above 0, of either direction
  int most_cost = 0;
  int detour_gain = 0;  // what the largest cost exceeds the way over other states by; 0: by none
  /// Not empty: costs are path lengths along a tree of states with edges of 1. One entry for each
  /// edge, the states on the far side of it, seen from the first state.
  std::vector<std::uint32_t> edges;
  /// Above 0: all changes between observed states cost this, and no unobserved state is of use, so
  /// the character is an unordered one of that weight.
  int common_cost = 0;

  int count() const { return static_cast<int>(states.size()); }
  std::int32_t of(int from, int to) const {
    return cost[static_cast<std::size_t>(from) * states.size() + static_cast<std::size_t>(to)];
  }
  /// The root has a say: the length of a tree depends on where it is.
  bool is_rooted() const { return asymmetric || detour_gain > 0 || root_states != 0; }
  /// A set of new numbers as states of the matrix.
  std::uint32_t in_matrix(std::uint32_t set) const;
};

/// Of a character with costs, over the flagged taxa (a byte each; empty: all). The states are those
/// of all taxa, so that they don't depend on the ones that take part.
character_costs costs_of_character(int character, std::span<const std::uint8_t> taxa = {});

}  // namespace zeb
