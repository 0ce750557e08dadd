// Comparisons after the selectors of groups.
#pragma once

#include <string_view>

namespace zeb {

/// "a op b" after a selector: "=5", "<3", ">=2", "(1,4)" with both ends included.
struct value_condition {
  double lowest = 0;
  double highest = 0;
  bool lowest_open = false;  // the end itself isn't included
  bool highest_open = false;
  bool holds(double value) const;
};
/// Reads the condition; `word` is the selector, for the error where none follows.
value_condition read_condition(std::string_view word);

}  // namespace zeb
