// Least and most steps of a character with costs.
#pragma once

#include <cstdint>
#include <span>

#include "matrix/matrix.h"

namespace zeb {

/// Over the flagged taxa, unweighted. The minimum is exact for trees of states and where few kinds
/// of cells occur, else a bound from below; the maximum is the cost on the bush.
step_range cost_steps(int character, std::span<const std::uint8_t> taxa);

}  // namespace zeb
