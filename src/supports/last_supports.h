// The supports that were measured last, for scripts.
#pragma once

#include <vector>

namespace zeb {

/// By node of the tree that was shown; 0 where a node has no support. Written by the commands that
/// measure support.
struct last_supports_state {
  std::vector<double> values;
};
extern last_supports_state last_supports;

void keep_supports(std::vector<double> values);

}  // namespace zeb
