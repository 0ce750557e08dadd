// The trees in memory as a NEXUS trees block.
#pragma once

#include <optional>

#include "base/output_file.h"
#include "formats/labels_from_tags.h"
#include "formats/written_words.h"

namespace zeb {

struct written_trees {
  bool stored = false;          // all trees in memory, with the labels and lengths that they have
  std::optional<tag_use> tags;  // the tag tree after them, with its tags as these
  bool plain = false;           // for programs that take no blanks before ";"
};
/// All of them in one block. Warns of tags that can't be written so.
void write_nexus_trees(output_file& out, const written_trees& what, word_writer& words);

}  // namespace zeb
