// Starting trees: taxa are added one at a time, each to the branch where it costs least (Farris
// 1970). Sets are repaired after each addition, so that no full pass happens between them.
#pragma once

#include <cstdint>
#include <span>

#include "search/search_context.h"

namespace zeb {

/// Raises the error of settings that can't go together: with each other, with branches tried in
/// random order, or with constraints.
void check_additions(const addition_settings& wanted, bool random_insertion, bool constrained);

/// Builds a binary tree of all active taxa into `anc` (internal numbering, `nodes` entries), rooted
/// on terminal 0, with the generator as it stands. Take the score with tree_length: node sets
/// are those of the last addition. When the search is interrupted the tree is partial and of no
/// use. Errors: settings that can't go together.
void wagner_tree(search_context& context, std::span<std::int32_t> anc,
                 const addition_settings& additions);

}  // namespace zeb
