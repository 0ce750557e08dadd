// Saving of results every so many seconds: whole files, beside first and then renamed, to "name-1"
// and "name-2" in turn.
#pragma once

#include <functional>
#include <string>

#include "trees/tree_record.h"

namespace zeb {

/// Gives tree `number` of the buffer as it is outside of a search, in `nnodes` cells.
using tree_view = std::function<void(int number, tree_span tree)>;

/// Written in auto_save.cpp only.
struct auto_save_state {
  int seconds = 0;  // 0: off
  std::string name;
  bool parenthetical = false;
  int next = 1;           // which of the two files is written next
  double last_saved = 0;  // wall clock, seconds
  tree_view view;         // empty: the trees of the buffer are what they are
};
extern auto_save_state auto_save;

void set_auto_save(int seconds, const std::string& name, bool parenthetical);
/// While a search keeps the buffer's trees in a form of its own: how they are to be saved. Empty
/// at its end.
void set_auto_save_view(tree_view view);
/// Saves if the time has come: cheap enough to be called between any two steps of a search.
void auto_save_if_due();
/// Saves now, if automatic saving is on and there are trees.
void auto_save_now();

}  // namespace zeb
