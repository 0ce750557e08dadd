// Taxa, characters and blocks as kinds of lists.
#pragma once

namespace zeb {

/// Registers the kinds "taxon", "character" and "block" with the list parser.
void register_matrix_lists();
/// First character of a block and the one behind its last; block 0 is all. False: no such block.
bool characters_of_block(int block, int* first, int* end);

}  // namespace zeb
