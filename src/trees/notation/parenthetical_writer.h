// Trees as nested parentheses: the one writer, whose text `parenthetical_reader.h` reads.
#pragma once

#include <functional>
#include <string>

#include "trees/tree_record.h"

namespace zeb {

/// Writes a tree as nested parentheses. `label` gives the text of a terminal, `tag` (may be empty)
/// the text after a node's closing parenthesis or label. No recursion on the machine stack.
std::string parenthetical_text(const_tree_span tree, int ntax,
                               const std::function<std::string(int)>& label,
                               const std::function<std::string(int)>& tag = {});
/// The tree with the labels that `tread` reads back.
std::string stored_tree_text(const_tree_span tree);

}  // namespace zeb
