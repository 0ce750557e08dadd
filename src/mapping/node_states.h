// What the nodes of a tree may have of one character, and how it is written.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/plain/range_optimisation.h"
#include "mapping/tree_shape.h"

namespace zeb {

/// Of a discrete character states of the matrix, of a continuous one a range in thousandths.
struct node_values {
  std::uint32_t states = 0;    // 0: nothing is known
  value_range range = {1, 0};  // low above high: nothing is known

  bool known() const { return states != 0 || range.low <= range.high; }
  /// More than one state or value.
  bool ambiguous() const { return (states & (states - 1)) != 0 || range.low < range.high; }
  bool meets(const node_values& other) const {
    return (states & other.states) != 0 ||
           std::max(range.low, other.range.low) <= std::min(range.high, other.range.high);
  }
  bool operator==(const node_values&) const = default;
  /// Becomes what either of them may have.
  void join(const node_values& other);
};

enum class pass { down, final };

/// Values of a character at the nodes of a tree.
struct mapped_character {
  int character = 0;
  std::int64_t steps = 0;  // unweighted; thousandths for continuous characters
  std::vector<node_values> at_nodes;
};
/// Any character but a landmark.
mapped_character map_character(const tree_shape& shape, int character, pass which = pass::final,
                               polytomy_kind polytomies = polytomy_kind::hard);

bool is_landmark(int character);
/// States by their symbols, "01", or, while characters are shown by name, by their names where
/// they have some, "absent/present". Ranges as "0.500-0.700", in the original scale where
/// that is shown. "?" where nothing is known.
std::string values_text(int character, const node_values& values);
std::string state_name(int character, int state);
/// "Char. 3", "Char. 3, name" where the character has one.
std::string character_heading(int character);
/// "4 steps", "1.250 steps".
std::string steps_text(int character, std::int64_t steps);
/// The taxon, or the number of an internal node.
std::string node_label(int node);

}  // namespace zeb
