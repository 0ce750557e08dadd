// Starting trees: taxa are added one at a time, each to the branch where it costs least (Farris
// 1970). Sets are repaired after each addition, so that no full pass happens between them.
#pragma once

#include <cstdint>
#include <span>

namespace zeb {

constexpr int all_taxa = 1'000'000'000;  // a look-ahead without a number

/// How taxa are put in order; set by `mult`.
struct addition_settings {
  int informative = 0;   // `ias`: taxa to reorder by informative characters; 0 off
  int look = 0;          // taxa looked at for each addition; 0: a plain random sequence
  int rule = 0;          // 0 largest best-to-worst difference (`sas`), 1 closest, 2 furthest
  int cluster_from = 0;  // node clusters after this many taxa; 0 never
};
extern addition_settings additions;

/// Raises the error of settings that can't go together.
void check_additions(const addition_settings& wanted);

/// Builds a binary tree of all active taxa into `anc` (internal numbering, `nodes` entries), rooted
/// on terminal 0, from the seed (-1: the generator goes on as it is). Take the score with
/// tree_length: node sets are those of the last addition. When the search is interrupted the tree
/// is partial and of no use. Errors: settings that can't go together.
void wagner_tree(std::span<std::int32_t> anc, int seed);

}  // namespace zeb
