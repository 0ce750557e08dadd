#include "matrix/blocks.h"

#include <utility>

#include "base/indices.h"
#include "matrix/matrix.h"

namespace zeb {

bool characters_of_block(int block, int* first, int* end) {
  if (block < 0 || block > matrix.nblocks) return false;
  *first = block == 0 ? 0 : matrix.block_first[at(block)];
  *end = block == 0 || block == matrix.nblocks ? matrix.nchar : matrix.block_first[at(block + 1)];
  return true;
}

void lay_out_blocks(const std::vector<int>& starts, std::vector<std::string> names) {
  matrix.block_first.assign(1, 0);
  matrix.block_first.insert(matrix.block_first.end(), starts.begin(), starts.end());
  matrix.nblocks = static_cast<int>(starts.size());
  matrix.block_names = std::move(names);
}

void set_blocks(const std::vector<int>& starts) {
  lay_out_blocks(starts);
  int block = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (block < matrix.nblocks && c == starts[at(block)]) ++block;
    matrix.characters[at(c)].block = block;
    matrix.kept_characters[at(c)].block = block;
  }
}

void set_block_names(std::vector<std::string> names) { matrix.block_names = std::move(names); }

bool taxon_has_data(int taxon, int block) {
  int first = 0;
  int end = 0;
  characters_of_block(block, &first, &end);
  for (int c = first; c < end; ++c) {
    if (!is_missing(taxon, c)) return true;
  }
  return false;
}

}  // namespace zeb
