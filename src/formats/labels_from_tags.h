// The tags of the tag tree as labels and lengths of branches, for tree files.
#pragma once

#include <string>
#include <vector>

#include "trees/branch_labels.h"

namespace zeb {

/// What tags are in a tree statement. `both`: where terminals have numbers, as `lengths`, with
/// other texts of internal nodes as labels; else as `labels`. With `lengths`, "0.9/0.05" is a label
/// and a length.
enum class tag_use { labels, lengths, both };
/// By node of the tag tree. Warns of tags that can't be written so.
std::vector<branch_label> labels_from_tags(tag_use use);
/// A number as lengths are written, with nothing before or after it.
bool is_number(const std::string& text);

}  // namespace zeb
