// Values of all lanes of a block as one vector, for the sources that are compiled for processors
// with wide vectors and for all others. Products and sums are rounded one by one in each, so all
// give the same figures.
#pragma once

#include <cmath>
#include <cstring>

#include "landmarks/point_blocks.h"

#if defined(__x86_64__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define ZEB_ALSO_FOR_WIDE_VECTORS \
  __attribute__((target_clones("avx512f", "avx2", "default"), flatten))
#else
#define ZEB_ALSO_FOR_WIDE_VECTORS
#endif
// Functions that take vectors are all inlined, so how they would be passed doesn't matter.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

namespace zeb {

typedef double lanes __attribute__((vector_size(block_lanes * sizeof(double))));

inline lanes load_lanes(const double* from) {
  lanes values;
  std::memcpy(&values, from, sizeof values);
  return values;
}
inline void store_lanes(double* to, const lanes& values) {
  std::memcpy(to, &values, sizeof values);
}
inline void add_lanes(double* to, const lanes& values) { store_lanes(to, load_lanes(to) + values); }
template <int count>
void store_all(double* to, const lanes& values) {
  for (int i = 0; i < count; ++i) store_lanes(to + i * block_lanes, values);
}
inline lanes square_root(const lanes& values) {
  lanes roots;
  for (int l = 0; l < block_lanes; ++l) roots[l] = std::sqrt(values[l]);
  return roots;
}
inline lanes at_least(const lanes& values, double least) {
  lanes limited;
  for (int l = 0; l < block_lanes; ++l) limited[l] = values[l] > least ? values[l] : least;
  return limited;
}
inline double largest(const lanes& values) {
  double most = values[0];
  for (int l = 1; l < block_lanes; ++l)
    if (values[l] > most) most = values[l];
  return most;
}

}  // namespace zeb
