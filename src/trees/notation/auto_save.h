// Saving of results every so many seconds: whole files, to "name-1" and "name-2" in turn. Files of
// those names that this run hasn't written are kept under other names.
#pragma once

#include <sys/types.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "trees/tree_record.h"

namespace zeb {

using tree_list = std::vector<std::vector<tree_node>>;
/// What is to be saved while a search runs; empty: none runs.
struct search_view {
  /// Gives tree `number` of the buffer as it is outside of a search, in `nnodes` cells.
  std::function<void(int number, tree_span tree)> of_buffer;
  /// Trees that aren't there yet: those of the parts that are searched now.
  std::function<tree_list()> beyond;
};

/// A file as the system knows it.
struct saved_file {
  dev_t device = 0;
  ino_t node = 0;  // 0: none
};

/// Written in auto_save.cpp only.
struct auto_save_state {
  int seconds = 0;  // 0: off
  std::string name;
  bool parenthetical = false;
  int next = 1;                       // which of the two files is written next
  double last_saved = 0;              // wall clock, seconds
  std::string path;                   // the name, whatever the working directory is by now
  bool failing = false;               // the last saving failed, and the user knows
  std::array<saved_file, 2> written;  // by this run, to "name-1" and "name-2"
  search_view view;
};
extern auto_save_state auto_save;

/// Begins or ends it; files of another run are put out of the way at once.
void set_auto_save(int seconds, const std::string& name, bool parenthetical);
/// While a search keeps its trees in a form of its own: how they are to be saved. Empty at its end.
void set_auto_save_view(search_view view);
/// Tree `number` of the buffer as it is outside of a search, whether one runs or not.
std::vector<tree_node> viewed_tree(int number);
/// The trees that a running search has beyond the buffer.
tree_list trees_beyond_buffer();
/// Saves if the time has come: cheap enough to be called between any two steps of a search.
void auto_save_if_due();
/// Saves now, if automatic saving is on and there are trees. A failure is told once, and saving is
/// tried again when its time comes.
void auto_save_now();
/// The same when the program ends: a failure is noted as a loss.
void auto_save_at_end();

}  // namespace zeb
