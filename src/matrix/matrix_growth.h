// More characters and taxa for data in memory: files may bring their characters in several blocks.
#pragma once

#include <cstdint>
#include <vector>

#include "matrix/matrix.h"

namespace zeb {

/// The data in memory put aside while a larger matrix is laid out for them and for `count` more
/// characters, which go before the character `place`. First the copy is made, then `begin_matrix`,
/// `put_back_cells` before the new cells are stored, `put_back_settings` after `finish_matrix`.
/// Trees aren't kept. Cells may have become wider.
class data_aside {
 public:
  data_aside(int place, int count);
  int taxa() const { return data_.ntax; }
  const std::vector<std::string>& taxon_names() const { return taxon_names_; }
  /// Title, names, cells, types of characters. The taxa keep their numbers.
  void put_back_cells() const;
  /// What follows `finish_matrix`: defaults, scales, groups, outgroup, activity of taxa.
  void put_back_settings() const;
  /// Where the blocks of the former data start now.
  std::vector<int> block_starts() const;

 private:
  int new_number(int character) const {
    return character < place_ ? character : character + count_;
  }

  int place_;
  int count_;
  matrix_state data_;  // its spans are of memory that has gone
  std::vector<std::string> taxon_names_;
  std::vector<std::uint32_t> cells_;
  std::vector<bool> gaps_;  // by cell: read as missing
  std::vector<character_record> characters_, kept_characters_;
  std::vector<continuous_scale> scales_;
  std::vector<std::uint8_t> taxon_active_;
  std::vector<std::uint32_t> taxon_groups_, character_groups_;
};

}  // namespace zeb
