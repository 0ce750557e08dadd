// What the last analysis of supports found, for scripts.
#pragma once

#include <vector>

namespace zeb {

struct last_supports_state {
  // By node of the tree that it showed last, up to the last node; terminals, the root and groups
  // that any tree has by its rooting have the highest value there is.
  std::vector<double> of_node;
};
extern last_supports_state last_supports;
void keep_supports(std::vector<double> of_node);

}  // namespace zeb
