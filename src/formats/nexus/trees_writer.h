// The trees in memory as NEXUS trees blocks.
#pragma once

#include "base/output_file.h"

namespace zeb {

/// All trees in memory, as a trees block; `plain` for programs that take no blanks before ";". With
/// `with_tags` the tag tree follows in it, its tags as labels and lengths.
void write_nexus_trees(output_file& out, bool plain, bool with_tags);
/// What the tags of the tag tree are in a tree statement. `both`: a number is a length where
/// terminals have numbers too, else a label, as supports are.
enum class tag_use { labels, lengths, both };
/// The tag tree as a trees block, with its tags. Warns of tags that can't be written so.
void write_nexus_tag_tree(output_file& out, tag_use use, bool plain);

}  // namespace zeb
