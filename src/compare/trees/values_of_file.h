// The matrix with what one file has where the files differ.
#pragma once

#include <span>
#include <vector>

#include "compare/trees/compared_results.h"

namespace zeb {

/// While it lives the cells and settings are those of a file; 0 the first, 1 the second.
class values_of_file {
 public:
  values_of_file(int file, std::span<const differing_cell> cells,
                 std::span<const differing_settings> settings = {});
  ~values_of_file();
  values_of_file(const values_of_file&) = delete;
  values_of_file& operator=(const values_of_file&) = delete;

 private:
  std::span<const differing_cell> cells_;
  std::vector<std::uint32_t> former_cells_;
  std::vector<differing_settings> former_settings_;  // as changes in `first`
};

/// The differences of one character; both lists are sorted by character.
std::span<const differing_cell> cells_of(std::span<const differing_cell> all, int character);
/// The characters that differ in cells or in settings, in ascending order.
std::vector<int> differing_characters(const compared_results& results);

}  // namespace zeb
