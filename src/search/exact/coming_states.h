// Steps that are sure to come: a state that no taxon of a partial tree has costs a step when the
// first taxon with it comes, wherever that goes (Hendy and Penny 1982).
//
// Those steps are charged from the beginning, for all taxa that aren't in the tree. So when such a
// taxon comes, its new state must cost nothing: the taxon is costed with that character missing.
// Costs of places then are what they add to the lower bound on complete trees, not to the length of
// the partial one.
#pragma once

#include <span>
#include <vector>

#include "search/exact/packed_fields.h"

namespace zeb {

class coming_states {
 public:
  /// Looks ahead at these fields.
  coming_states(const search_data& data, std::span<const single_state_field> fields);

  /// The states of a terminal, as a set of node words: none where the cell is missing or the field
  /// left out.
  const word* states_of(int terminal) const {
    return states_.data() + static_cast<std::size_t>(terminal) * words_;
  }
  /// Steps of a field for the states of `rest` (a union of states) that `present` lacks. Where that
  /// has none at all, the first state costs nothing.
  static int steps_to_come(const single_state_field& field, const word* present, const word* rest);
  /// Copies the sets of a terminal with all bits set in fields whose state `present` lacks.
  void without_new_states(const search_data& data, int terminal, const word* present,
                          word* out) const;
  std::size_t words() const { return words_; }

 private:
  std::size_t words_;
  std::vector<word> states_;  // by terminal
};

}  // namespace zeb
