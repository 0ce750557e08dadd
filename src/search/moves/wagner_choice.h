// Addition sequences that look ahead: which taxon comes next is decided by what it would cost.
#pragma once

#include "search/moves/wagner_build.h"

namespace zeb {

/// Puts the first three taxa and the one to follow in front of the sequence, by comparing all
/// threes of the outgroup and two of the next `look` taxa.
void choose_first_taxa(wagner_build& build, int look, int rule);
/// Puts the sequence in order by the informative characters (packed) that each next taxon makes.
void informative_sequence(wagner_build& build);
/// Adds the taxa from position 3 on, each chosen among the next ones.
void add_chosen_taxa(wagner_build& build);

}  // namespace zeb
