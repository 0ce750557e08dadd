// What commands with walks share: how deep they nest, the tree that they are about.
#pragma once

#include "macro/body_record.h"

namespace zeb {

/// How many of each kind may be open at a time: `travtree = N` and the like.
struct walk_limits {
  int travtree = 5;
  int iterrecs = 5;
  int combine = 5;
};
extern walk_limits walk_levels;  // written by the functions of this file only

/// Takes "= N", which sets the limit of a kind. False where something else comes next.
bool accept_walk_limit(body_kind kind);
/// Error where one more of the kind would be nested too deep.
void check_walk_nesting(body_kind kind);

/// The number of a tree in memory, with the errors of these commands.
int read_walked_tree();

/// Error within another enumeration of trees, or where loops are nested too deep.
void check_enumeration_nesting();

/// Ends the innermost walk of the kind: the command goes on after its closing word.
void end_walk(body_kind kind);
/// The error of a closing word that closes nothing.
[[noreturn]] void unmatched_closing_word(const char* opening);

}  // namespace zeb
