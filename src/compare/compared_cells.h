// Where the cells of discrete characters that two data sets share differ.
#pragma once

#include "compare/comparison.h"

namespace zeb {

/// Fills `cells`, in the order in which they are gone through, with what each becomes.
void compare_cells(const comparison_task& task, comparison& found);

/// Does the first set's entry have a state that the second one's lacks, and the other way round?
/// Missing entries have none.
struct scoring_change {
  bool adds;
  bool deletes;
};
scoring_change scoring_change_of(const cell_difference& d);

/// "0 absent, 1 present": the states of a cell with the names that they have there.
std::string states_in_words(std::uint32_t states, const data_character& character,
                            const std::vector<std::string>& names);

}  // namespace zeb
