// The division of the characters into data blocks, numbered from 1.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// Makes blocks that start at the given characters (ascending, the first one 0); names go.
void set_blocks(const std::vector<int>& starts);
/// Has the taxon an entry that isn't missing among the characters of the block?
bool taxon_has_data(int taxon, int block);

}  // namespace zeb
