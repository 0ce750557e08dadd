// Scores of trees: the values that are none, and the one way to compare two.
#pragma once

namespace zeb {

constexpr double no_bound = 2147483647.0;       // no limit on a cost or score
constexpr double unknown_score = 4294967295.0;  // not scored yet; worse than any score
constexpr double no_score = -1.0;               // there is nothing that has a score

/// Whole steps are compared exactly. Sums of fractions, under implied weighting or with continuous
/// characters, depend on the order of summing: they are one score within `score_tolerance`.
enum class score_kind : bool { whole, fractional };
constexpr double score_tolerance = 1e-08;

/// How far apart scores of this kind may be and still be the same.
constexpr double tolerance_of(score_kind kind) {
  return kind == score_kind::fractional ? score_tolerance : 0.0;
}
constexpr bool is_same_score(double a, double b, score_kind kind) {
  const double apart = a < b ? b - a : a - b;
  return kind == score_kind::whole ? a == b : apart < score_tolerance;
}
/// Is `a` lower than `b`, and not the same?
constexpr bool is_better_score(double a, double b, score_kind kind) {
  return a < b && !is_same_score(a, b, kind);
}
/// Is `a` lower than `b`, or the same?
constexpr bool is_within_bound(double a, double b, score_kind kind) {
  return a <= b || is_same_score(a, b, kind);
}

}  // namespace zeb
