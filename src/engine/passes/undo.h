// The log by which changes of sets are taken back.
#pragma once

#include "engine/search_data.h"

namespace zeb {

/// From now on every word that a wave, reroot_subtree or a cluster's widening changes is noted, so
/// that undo_sets can put all of them back at a fraction of a wave's cost. The log is emptied.
void begin_undo(search_data& data);
/// Puts back every word changed since begin_undo, cluster unions included, and empties the log
/// (recording goes on). Links are the caller's: they must be put back too. False if the log had
/// overflowed: nothing was put back; attach and repair with a wave instead.
bool undo_sets(search_data& data);
/// As undo_sets, but only what was changed since the log had `count` pieces; they stay in it.
bool undo_back_to(search_data& data, int count);
/// Drops the notes made since the log had `count` pieces.
void forget_notes(search_data& data, int count);
void end_undo(search_data& data);

/// Notes `count` words at `p` if a log is kept. A piece is a fixed number of words: the last one
/// may go past the end, so the memory must.
void note_words(search_data& data, word* p, int count);

}  // namespace zeb
