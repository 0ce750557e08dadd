// Multidimensional scaling by majorisation (SMACOF: de Leeuw 1977; de Leeuw and Heiser 1980).
#pragma once

#include <span>
#include <vector>

namespace zeb {

struct scaling_result {
  std::vector<double> coordinates;  // dims rows of n values
  double stress = 0;                // weighted sum of squared differences of distances
  double correlation = 0;           // of input and output distances (Pearson)
};

/// Places n points in `dims` dimensions so that their distances come near the given ones.
/// `distances` and `weights` are n x n, symmetric. Starts from a fixed configuration, so the result
/// depends on the data only.
scaling_result scale_by_smacof(std::span<const double> distances, std::span<const double> weights,
                               std::size_t n, std::size_t dims);

/// Pearson's correlation of two samples of the same size; 0 where one of them doesn't vary.
double correlation(std::span<const double> x, std::span<const double> y);

}  // namespace zeb
