// Points of all lanes of a block, each in vectors, and what lies between three of them.
#pragma once

#include "landmarks/lane_vectors.h"

namespace zeb {

template <int dims>
struct lane_point {
  lanes at[dims];
};

/// From and to coordinates as blocks have them: dimension, lane.
template <int dims>
lane_point<dims> load_point(const double* from) {
  lane_point<dims> point;
  for (int d = 0; d < dims; ++d) point.at[d] = load_lanes(from + d * block_lanes);
  return point;
}
template <int dims>
void store_point(const lane_point<dims>& point, double* to) {
  for (int d = 0; d < dims; ++d) store_lanes(to + d * block_lanes, point.at[d]);
}

template <int dims>
lane_point<dims> operator-(const lane_point<dims>& a, const lane_point<dims>& b) {
  lane_point<dims> difference;
  for (int d = 0; d < dims; ++d) difference.at[d] = a.at[d] - b.at[d];
  return difference;
}
template <int dims>
lanes product(const lane_point<dims>& a, const lane_point<dims>& b) {
  lanes sum{};
  for (int d = 0; d < dims; ++d) sum += a.at[d] * b.at[d];
  return sum;
}
template <int dims>
lanes between(const lane_point<dims>& a, const lane_point<dims>& b) {
  const lane_point<dims> way = a - b;
  return square_root(product(way, way));
}
/// Of the triangle that two sides span.
template <int dims>
lanes doubled_area(const lane_point<dims>& u, const lane_point<dims>& v) {
  const lanes across = u.at[0] * v.at[1] - u.at[1] * v.at[0];
  if constexpr (dims == 2) {
    return across < 0 ? -across : across;
  } else {
    const lanes x = u.at[1] * v.at[2] - u.at[2] * v.at[1];
    const lanes y = u.at[2] * v.at[0] - u.at[0] * v.at[2];
    return square_root(x * x + y * y + across * across);
  }
}

/// The points whose distances from three others have the least sum.
template <int dims>
lane_point<dims> fermat_of_lanes(const lane_point<dims>& a, const lane_point<dims>& b,
                                 const lane_point<dims>& c) {
  constexpr double root_of_3 = 1.7320508075688772;
  const lane_point<dims> u = b - a;
  const lane_point<dims> v = c - a;
  const lane_point<dims> w = c - b;
  // Products of sides by cosines, and twice the area.
  const lanes at_a = product(u, v);
  const lanes at_b = -product(u, w);
  const lanes at_c = product(v, w);
  const lanes area = doubled_area(u, v);
  // Not above 0 where the angle is 120 degrees or more, or two points coincide.
  const lanes ka = root_of_3 * at_a + area;
  const lanes kb = root_of_3 * at_b + area;
  const lanes kc = root_of_3 * at_c + area;
  const lanes all = lanes{} + 1;
  const lanes none{};
  lanes wa = ka <= 0 ? all : (kb <= 0 ? none : (kc <= 0 ? none : kb * kc));
  lanes wb = ka <= 0 ? none : (kb <= 0 ? all : (kc <= 0 ? none : ka * kc));
  lanes wc = ka <= 0 ? none : (kb <= 0 ? none : (kc <= 0 ? all : ka * kb));
  const lanes sum = wa + wb + wc;
  wa /= sum;
  wb /= sum;
  wc /= sum;
  lane_point<dims> result;
  for (int d = 0; d < dims; ++d) result.at[d] = wa * a.at[d] + wb * b.at[d] + wc * c.at[d];
  return result;
}

}  // namespace zeb
