// Reads rows of continuous characters, and puts each character on the stored scale.
#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "matrix/reading/cell_reader.h"

namespace zeb {

/// One value as read, in the user's units.
struct continuous_value {
  double low = -1;  // negative: missing; see the constants
  double high = -1;
};
constexpr double value_missing = -1;
constexpr double value_inapplicable = -2;
constexpr double largest_value = 65.0;  // of the stored scale, in the user's units

/// The scale that a character with values in this range gets when it is read.
continuous_scale scale_of_reading(double least, double largest);

/// The values of the continuous characters of a matrix being read. They are kept as doubles until
/// the matrix is complete, since only then is the scale known. In the arena's high end.
class continuous_reader {
 public:
  /// Reads one row of values; returns one past the last character read. In the first row of a block
  /// the characters come to be known.
  int read_row(const row_place& place);
  /// For a row that stands for several taxa.
  void copy_row(int from, int to);
  /// Stores all values, as thousandths from 0 to 65,000, and the scale of each character.
  void store_all();

 private:
  struct block_values {
    int first;                           // first character
    int end;                             // one past the last
    std::span<continuous_value> values;  // by taxon, then character
  };
  continuous_value parse(const row_place& place, int character, const std::string& text);
  void store_character(const block_values& block, int character);

  std::vector<block_values> blocks_;
  std::vector<std::pair<int, continuous_scale>> scales_;  // of the characters stored so far
  bool told_rescaling_ = false;
};

}  // namespace zeb
