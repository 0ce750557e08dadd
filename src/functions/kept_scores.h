// Scores that scripts ask for tree by tree: what they need of the matrix is kept from one tree to
// the next, as long as the matrix and its settings are the same.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "engine/plain/plain_optimisation.h"
#include "trees/tree_record.h"

namespace zeb {

/// The optimiser of these characters (one byte each), good until the matrix changes or the next
/// call.
plain_optimiser& kept_optimiser(std::span<const std::uint8_t> characters);

/// Length of a tree from the packed data of searches, which takes a small part of the time; hard
/// polytomies. Nothing where those can't tell it: trees that aren't binary or lack taxa, inactive
/// taxa, characters with costs or continuous ones, implied weights, little memory.
std::optional<double> quick_length(const_tree_span tree);

}  // namespace zeb
