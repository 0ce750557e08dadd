// Changes to the type and the states of a matrix in memory.
#pragma once

namespace zeb {

/// All characters become alphanumeric: states keep their numbers, cells that said nothing become
/// missing. Error with continuous or landmark characters.
void convert_to_numeric();
/// Says of the DNA and proteins in memory that gaps are states; the caller then sets their cells.
void make_gaps_states_of_sequences();
/// All characters become DNA, states 0 to 3 being A, G, C and T; with `gaps_are_states` 4 is the
/// gap. Error, with nothing changed, for a character with more states.
void convert_to_dna(bool gaps_are_states);
/// Renumbers the states of alphanumeric non-additive characters from 0, without holes. Returns how
/// many characters changed.
int renumber_states();

}  // namespace zeb
