// The division of the characters into data blocks, numbered from 1.
#pragma once

#include <string>
#include <vector>

namespace zeb {

/// The first character of a block and the one after its last; block 0 is all. False: no such block.
bool characters_of_block(int block, int* first, int* end);

/// The blocks of a matrix that is being read: their first characters (ascending, the first one 0)
/// and, where they have any, their names, from that of block 0, "all". `finish_matrix` does the
/// rest.
void lay_out_blocks(const std::vector<int>& starts, std::vector<std::string> names = {});
/// Makes blocks of the data in memory that start at the given characters (ascending, the first one
/// 0); names go.
void set_blocks(const std::vector<int>& starts);
/// Names of all blocks, from that of block 0, "all".
void set_block_names(std::vector<std::string> names);
/// Has the taxon an entry that isn't missing among the characters of the block?
bool taxon_has_data(int taxon, int block);

}  // namespace zeb
