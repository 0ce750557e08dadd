// What a file holds, told by how it begins.
#pragma once

#include <string_view>

#include "base/input_file.h"

namespace zeb {

enum class file_kind { commands, fasta, phylip, tps, newick, compact_trees };
/// The kind of a file that begins so. No command begins as the other kinds do.
file_kind kind_of_file(std::string_view start);

/// Reads data or trees; false for a file of commands, which is left as it is.
bool read_known_format(input_file& file);

}  // namespace zeb
