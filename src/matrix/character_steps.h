// Least and largest steps of characters over all trees, kept with the records of the characters.
#pragma once

#include <cstdint>
#include <span>

#include "matrix/matrix.h"

namespace zeb {

/// The range over the flagged taxa (a byte per taxon), whatever the records hold.
step_range steps_over_taxa(int character, std::span<const std::uint8_t> taxa);
/// The same in whole units, also of continuous and landmark characters; of the latter about.
struct length_range {
  double least = 0;
  double most = 0;
};
length_range lengths_over_taxa(int character, std::span<const std::uint8_t> taxa);
length_range lengths_over_active_taxa(int character);
/// Steps over the active taxa, from the record, which is brought up to date where needed.
int minimum_steps(int character);
int maximum_steps(int character);
/// What homoplasy counts from: the user's minimum of a character with costs, else `least`.
int homoplasy_base(int character, int least);
/// Computes min_steps, max_steps and `observed` of every character that needs it: those with
/// `needs_recheck`, all of them after a change of the active taxa.
void recheck_steps();
/// After a change of the character's cells: its steps are to be computed again.
void forget_steps(int character);
/// Is the character informative for the active taxa: its maximum exceeds its minimum.
bool is_informative(int character);

}  // namespace zeb
