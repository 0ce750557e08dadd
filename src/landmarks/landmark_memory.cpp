#include "landmarks/landmark_memory.h"

#include <cmath>

#include "base/arena.h"
#include "base/errors.h"
#include "landmarks/landmark_settings.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// In bytes, for all configurations.
double memory_of_distances() {
  const landmark_settings& set = lmark.settings;
  double bytes = 0;
  for (const landmark_configuration& one : landmark_configurations()) {
    const double grid = set.use_grid ? std::pow(set.cells, one.dimensions) : 0;
    const double candidates = grid + (set.use_terminals ? matrix.ntax : 0);
    bytes += (candidates * candidates + candidates) * one.points * sizeof(double);
    bytes += static_cast<double>(matrix.nnodes) * one.points * sizeof(landmark_point);
  }
  return bytes;
}

}  // namespace

void check_landmark_memory() {
  if (landmark_configurations().empty() || lmark.settings.low_memory) return;
  const bool is_short = 1.25 * memory_of_distances() > static_cast<double>(arena_free());
  if (is_short && !lmark.low_memory_forced)
    warning("Landmark optimization will use low-mem algorithms");
  force_low_memory(is_short);
}

}  // namespace zeb
