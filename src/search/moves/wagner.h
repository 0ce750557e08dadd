// Starting trees: taxa are added one at a time, each to the branch where it costs least (Farris
// 1970). Sets are repaired after each addition, so that no full pass happens between them.
#pragma once

#include <cstdint>
#include <span>

#include "search/search_context.h"

namespace zeb {

constexpr int all_taxa = 1'000'000'000;  // a look-ahead without a number

/// How taxa are put in order.
struct addition_settings {
  int informative = 0;   // `ias`: taxa to reorder by informative characters; 0 off
  int look = 0;          // taxa looked at for each addition; 0: a plain random sequence
  int rule = 0;          // 0 largest best-to-worst difference (`sas`), 1 closest, 2 furthest
  int cluster_from = 0;  // node clusters after this many taxa; 0 never
};

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
