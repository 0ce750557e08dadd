// The tree file that stays open between commands, in compact or parenthetical form.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "base/output_file.h"

namespace zeb {

/// The open tree file. Written in tree_file.cpp only.
struct tree_file_state {
  output_file file;  // not open: none
  std::string name;
  bool parenthetical = false;
  int saved = 0;  // trees written since it was opened
};
extern tree_file_state tree_file;

/// Opens the file; a file that is open is closed first. Compact files are appended to where they
/// are for as many taxa; a new file takes the place of one of its name at the first trees saved, or
/// when it is closed. Errors leave the former file open.
void open_tree_file(const std::string& name, bool parenthetical);
/// Closes it with `closing` after parenthetical trees; error where not everything could be
/// written. Nothing happens without a file.
void close_tree_file(const char* closing = ";\nproc-;\n");

/// Which taxa are written, and as what.
struct tree_writing {
  bool active_only = false;  // inactive taxa are left out, active ones numbered from 0
  bool closing = false;      // the file is closed next, and is new or old until then
};
/// Writes the flagged trees to the open file, all or none.
void save_trees(std::span<const std::uint8_t> chosen, tree_writing how);
/// Writes the tag tree to the open file, which must be parenthetical.
void save_tags();

/// Closes it when the process ends, however it ends: a parenthetical file can be run. What couldn't
/// be written is noted as lost.
void abandon_tree_file();

}  // namespace zeb
