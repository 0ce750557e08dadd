// Compact tree files, read into the tree buffer.
#pragma once

#include <string_view>

#include "base/input_file.h"
#include "trees/tree_lists.h"

namespace zeb {

/// Adds the trees of the file to those in memory, and to the group. Of a file that is cut off, the
/// whole trees are read, with a warning. Errors store none: other data, damaged trees, a file that
/// can't be read.
void read_compact_file(input_file& file, const target_group& group);

/// Could these be the first bytes of a compact tree file? No text begins so.
bool starts_as_compact_file(std::string_view start);

}  // namespace zeb
