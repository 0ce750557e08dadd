// Random motions of configurations: what an alignment has to undo.
#pragma once

#include "base/random.h"
#include "realign/similarity.h"

namespace zeb {

/// Any turn is as likely as any other.
similarity random_turn(int dimensions, random_generator& generator);

/// So many times each taxon's configuration is turned about its centre by any angle, and shifted
/// along each axis by at most the largest extent of a taxon. Draws come from the process's
/// generator.
void move_at_random(int character, int cycles);

}  // namespace zeb
