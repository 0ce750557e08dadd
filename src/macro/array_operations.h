// The forms of `set` that work on whole arrays.
#pragma once

#include <span>
#include <string>

namespace zeb {

/// A named array as the forms below take it: its first data cell, data cells and dimensions.
struct whole_array {
  int number = 0;
  int first = 0;
  int cells = 0;
  std::span<const int> sizes;
  std::string name;
};
/// Reads the name of an array. Needs protection, which knows the dimensions.
whole_array read_array_name();
/// The same, for one-dimensional arrays only.
whole_array read_one_dimensional_array();

/// `set * a b OP c;`, `set * a *N;`, `set * a OP= b;`.
void operate_on_arrays();
/// `set ! a b;`: into `a` the indices of the values of `b` in increasing order.
void sort_array();
/// `set : a b [/wts];`: coordinates from distances.
void scale_distances();
/// `set ) a t r;`: rotation of points by tilt and rotation, in degrees.
void rotate_points();

}  // namespace zeb
