// Groups of the trees that jobs brought.
#pragma once

#include <string>

namespace zeb {

/// Trees `first` to `end` - 1 become the members of the group of that name, the first free one if
/// there is none yet. Nothing happens where all groups are taken.
void group_trees(int first, int end, const std::string& name);

}  // namespace zeb
