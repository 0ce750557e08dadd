// The tree file that stays open between commands, in compact or parenthetical form, and the
// automatic saving of results.
#pragma once

#include <cstdio>
#include <span>
#include <string>

#include "trees/tree_store.h"

namespace zeb {

/// The open tree file. Written in tree_file.cpp only.
struct tree_file_state {
  std::FILE* stream = nullptr;  // null: none
  std::string name;
  bool parenthetical = false;
  int saved = 0;  // trees written since it was opened
};
extern tree_file_state tree_file;

/// Opens the file; a file that is open is closed first. Compact files are appended to where they
/// are for as many taxa. Errors leave no file open.
void open_tree_file(const std::string& name, bool parenthetical);
/// Closes it with `closing` behind parenthetical trees; error where not everything could be
/// written. Nothing happens without a file.
void close_tree_file(const char* closing = ";\nproc-;\n");

/// Which taxa are written, and as what.
struct tree_writing {
  bool active_only = false;  // inactive taxa are left out, active ones numbered from 0
};
/// Writes the flagged trees to the open file.
void save_trees(std::span<const std::uint8_t> chosen, tree_writing how);
/// Writes the tag tree to the open file, which must be parenthetical.
void save_tags();

/// The tag tree as text, a tag behind each node that has one.
std::string tag_tree_text();
/// A stored tree as text with the labels that `tread` reads back.
std::string stored_tree_text(const_tree_span tree);

/// Automatic saving: whole files, beside first and then renamed, to "name-1" and "name-2" in turn.
struct auto_save_state {
  int seconds = 0;  // 0: off
  std::string name;
  bool parenthetical = false;
  int next = 1;           // which of the two files is written next
  double last_saved = 0;  // wall clock, seconds
  // While a search keeps the buffer's trees in a form of its own: gives tree `number` as the buffer
  // has it otherwise, in `nnodes` cells. Null: the trees are what they are.
  std::function<void(int number, tree_span tree)> search_view;
};
extern auto_save_state auto_save;
void set_auto_save(int seconds, const std::string& name, bool parenthetical);
/// Saves if the time has come: cheap enough to be called between any two steps of a search.
void auto_save_if_due();
/// Saves now, if automatic saving is on and there are trees.
void auto_save_now();

}  // namespace zeb
