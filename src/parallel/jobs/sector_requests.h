// Which sectors a job is to search.
#pragma once

#include <vector>

namespace zeb {

struct sector_request {
  enum class way { random, exclusive, around, polytomies };
  way how = way::random;
  int size = 0;        // random: terminals; exclusive: number of sectors
  bool loose = false;  // exclusive: sizes partly drawn
  int node = 0;
  int distance = 0;           // around a node: branches away from it
  int above = 0;              // polytomies: only nodes with more branches than this
  int below = 0;              // and fewer than this are gone through
  std::vector<int> trees;     // the tree, or a set to draw from
  std::vector<int> launched;  // only these of the exclusive sectors; empty: all
};

/// Reads what stands after `sector`. Errors where it can't be.
sector_request read_sector_request();

}  // namespace zeb
