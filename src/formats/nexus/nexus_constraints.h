// Constraints of monophyly in NEXUS files.
#pragma once

#include "base/output_file.h"
#include "formats/nexus/nexus_file.h"
#include "formats/written_words.h"

namespace zeb {

/// "constraints name (monophyly) = tree;", or "(backbone)", after the word: defines the constraint
/// tree, and switches nothing on. Taxa that the tree lacks float in a backbone; else they are no
/// members of any of its groups. A later one takes the place of an earlier one.
void read_nexus_constraints(nexus_file& file);
/// Writes the constraint tree, where one is defined. A warning tells of groups, which NEXUS has no
/// place for.
void write_nexus_constraints(output_file& out, bool plain, word_writer& words);

}  // namespace zeb
