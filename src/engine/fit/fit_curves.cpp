#include "engine/fit/fit_curves.h"

#include <algorithm>
#include <vector>

#include "base/arena.h"
#include "base/indices.h"

namespace zeb {
namespace {

fit_curve table_curve(std::span<const double> table, double scale, double entries_per_unit) {
  fit_curve curve;
  const std::span<double> own = alloc_low<double>(table.size());
  std::copy(table.begin(), table.end(), own.begin());
  curve.table = own.data();
  curve.last = static_cast<std::int32_t>(table.size()) - 1;
  curve.scale = scale;
  curve.entries_per_unit = entries_per_unit;
  return curve;
}

/// `scale` times the function, by homoplasy in `parts` of a unit of the function.
fit_curve scaled_curve(const fit_rules& rules, const fit_function& function, double scale,
                       double parts) {
  const double p = function.parameter;
  switch (function.kind) {
    case fit_function::form::line:
      return table_curve(std::vector{0.0, p}, scale, 1 / parts);
    case fit_function::form::table:
      return table_curve(rules.user, scale, p / parts);
    case fit_function::form::hyperbola:
      break;
  }
  fit_curve curve;
  curve.scale = scale;
  curve.half = p * parts;
  return curve;
}

}  // namespace

fit_curve curve_of(const fit_rules& rules, const fit_function& function) {
  return scaled_curve(rules, function, 1, 1);
}

fit_curve curve_of_set(const fit_rules& rules, int set) {
  const fit_set& s = rules.sets[at(set)];
  return scaled_curve(rules, s.function, s.characters, s.characters * parts_of_a_step);
}

}  // namespace zeb
