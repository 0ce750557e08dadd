// The names in front of the rows of a matrix being read: which taxa a row is for.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "language/fit_text.h"

namespace zeb {

/// The taxa named so far, and which of them have had their row in the block being read.
class taxon_rows {
 public:
  explicit taxon_rows(int ntax) : block_of_row_(static_cast<std::size_t>(ntax), 0) {}

  int count() const { return count_; }
  int rows_in_block() const { return rows_in_block_; }
  bool has_row(int taxon) const { return block_of_row_[static_cast<std::size_t>(taxon)] == block_; }
  void begin_block() {
    ++block_;
    rows_in_block_ = 0;
  }
  /// The taxa that a row named `word` is for: one, or several for a prefix ("abc..." and
  /// "abc____"). New names take the next free taxon. Notes that the taxa have their row; errors for
  /// a second row and for too many taxa. `similar`: a name that isn't found may stand for one that
  /// resembles it.
  std::vector<int> taxa_of_row(std::string_view word, bool similar);

 private:
  std::vector<int> taxa_with_prefix(std::string_view word) const;
  int most_similar(const std::string& name) const;
  int add_taxon(const std::string& name);
  void note_row(int taxon, const std::string& name, bool by_prefix);

  std::unordered_map<std::string, int> by_name_;
  std::vector<int> block_of_row_;  // by taxon: the last block in which it had a row
  int count_ = 0;
  int block_ = 0;  // number of the block being read, from 1
  int rows_in_block_ = 0;
  name_fitter fitter_{named::taxon};
};

}  // namespace zeb
