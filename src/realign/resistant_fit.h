// Superposition of points in the plane by repeated medians, which heed only what most points say.
#pragma once

#include <span>

#include "realign/similarity.h"

namespace zeb {

/// The motion of the target by medians: of the ratios of distances if `scales`, of the turns
/// between segments, then of the shifts along each axis. Point i of the one belongs to point i of
/// the other; none is missing.
similarity resistant_motion(std::span<const landmark_point> reference,
                            std::span<const landmark_point> target, bool scales);

}  // namespace zeb
