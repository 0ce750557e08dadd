// How far estimates of landmark costs were off in a search.
#pragma once

#include <cstdint>
#include <string>

namespace zeb {

/// In relation to what the joinings added. Cases are those that were optimised in full.
struct estimate_errors {
  std::int64_t cases = 0;
  double sum = 0;
  double sum_of_squares = 0;
  double least = 0;
  double most = 0;
  void add(double error);
  void add(const estimate_errors& other);
  double mean() const { return cases > 0 ? sum / static_cast<double>(cases) : 0; }
  double deviation() const;
};

/// For the end of a search: the margin and the errors met.
std::string approximation_in_words(const estimate_errors& errors);

}  // namespace zeb
