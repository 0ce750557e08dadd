// The blocks of data sets that were made of others.
#pragma once

#include <span>
#include <vector>

#include "compare/data_set.h"

namespace zeb {

/// The block that a character comes from.
struct block_origin {
  const data_set* from = nullptr;
  int block = 0;
  int type = 0;
  bool operator==(const block_origin&) const = default;
};
block_origin origin_of(const data_set& data, int character);

/// Neighbours from one block make a block, which keeps its name; those of another set than `main`
/// bear the name of their file as well.
void make_blocks(data_set& data, std::span<const block_origin> origins, const data_set& main);

}  // namespace zeb
