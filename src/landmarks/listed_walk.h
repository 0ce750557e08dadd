// Walks over trees or parts of them, with the list of their inner nodes.
#pragma once

#include <vector>

#include "landmarks/position_kernels.h"

namespace zeb {

/// How points are placed that have no places yet.
constexpr relaxation from_nothing = {50, 0.3, 1e-7, true};

struct listed_walk {
  listed_walk(const tree_links& links, tree_base base);
  listed_walk(const listed_walk&) = delete;
  listed_walk& operator=(const listed_walk&) = delete;
  std::vector<std::int32_t> inner;
  node_walk walk;
};

}  // namespace zeb
