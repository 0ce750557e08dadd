// Exchange of pieces between trees that have no clade of the same terminals there: what a clade of
// the one and a clade of the other have in common goes from one tree to the other as it stands
// there.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "search/search_context.h"

namespace zeb {

/// Terminals that two clades, one of each tree, have in common.
struct shared_piece {
  std::vector<std::uint8_t> is_in;  // by terminal
  int shared = 0;
  int unshared_target = 0;  // terminals of the one clade only
  int unshared_source = 0;  // ... and of the other
};

/// The piece that the clade of `node` in `target` shares with that clade of `source` which is most
/// like it: where fewest terminals are in one of the two only. Time in proportion to the terminals.
shared_piece piece_shared_at(std::span<const std::int32_t> target, int node,
                             std::span<const std::int32_t> source, int n);
/// Can the piece go from tree to tree? Not where less than three terminals are in it or outside.
bool can_be_exchanged(const shared_piece& piece, int n);

/// Makes `hybrid` from the target: the piece, arranged as in `source`, is put where it costs least
/// on what is left of the target. Trees are of the context, in internal numbering, not slots.
/// Returns the score.
double take_piece_over(search_context& context, std::span<const std::int32_t> target,
                       std::span<const std::int32_t> source, const shared_piece& piece,
                       std::span<std::int32_t> hybrid);

}  // namespace zeb
