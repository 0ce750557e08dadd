// Features that may be absent: a character that tells whether there is one ("sup_tail") and those
// that describe it ("sub_tail", "sub_tail_colour") become one character with costs of changes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "matrix/matrix.h"

namespace zeb {

/// What takes the place of a controlling character and all that it controls.
struct combined_character {
  int controller = 0;
  std::vector<int> controlled;  // at any level
  int weight = 1;
  cost_table costs;
  std::vector<std::uint32_t> cells;  // by taxon; 0 says nothing
  std::vector<std::string> state_names;
};

/// One for each controlling character among the active ones that isn't controlled itself and
/// controls some. Errors: more combinations of states than cells have room for, names that control
/// each other or stand for two characters, characters that aren't of numbers.
std::vector<combined_character> combine_features();

/// Puts it into the matrix: the controlling character gets cells, costs, weight and names of
/// states, the controlled ones become inactive.
void take_over(const combined_character& combined);

}  // namespace zeb
