// Everything that the optimisation engine and the searches need for one data set: packed words,
// node sets, the tree in work, kernels, clusters. All of it is reached through one object; sectors,
// parallel tasks and resampling push another one and pop it.
//
// Numbering inside: terminal 0 is the outgroup, the other active taxa follow in matrix order, then
// the inactive ones. With n active taxa, nodes 0 to n-1 are terminals, n is the root (its
// descendants are terminal 0 and the rest), n+1 to 2n-2 the other internal nodes.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/scores.h"
#include "engine/kernels/kernels.h"
#include "engine/whole_trees.h"
#include "engine/wide/wide_kinds.h"

namespace zeb {

/// Fields are packed in groups by their width: characters of two states and thresholds of additive
/// ones, of 3 or 4 states, of 5 to 8, of more.
constexpr int packing_groups = 4;
constexpr std::array<std::uint32_t, packing_groups> field_mask = {0x3, 0xf, 0xff, 0xffffffff};
constexpr std::array<int, packing_groups> field_bits = {2, 4, 8, 32};
constexpr std::array<int, packing_groups> fields_per_word = {16, 8, 4, 1};

/// A character that takes part in searches, in matrix order.
struct pack_entry {
  std::int32_t character;
  std::int32_t group;        // packing group
  std::int32_t fields;       // fields for one repetition
  std::int32_t repeat;       // repetitions of those fields
  std::int32_t weight;       // weight of the word or field
  std::int32_t first_field;  // position of its first field in its group
  std::int32_t factor;       // implied weights: homoplasy of a step
  std::int32_t set;          // implied weights: its weighting set; -1 none
  std::int32_t min_steps;  // least that any tree of these taxa can have, less what cells have told
  std::int32_t max_steps;  // most that any can have
  std::int32_t internal_steps;  // add to the homoplasy under implied weights
};

/// One per field of every group, padding included, in the order of the fields in the words.
struct field_record {
  std::int32_t weight;
  std::int32_t min_steps;  // after the constant part was removed
  std::int32_t max_steps;
  std::int32_t character;  // matrix character; -1 padding
};

/// One of the two sides of a joining; see join_end. A node or, for a cluster, its number.
struct join_side {
  join_end end;
  int number;
};

struct search_data {
  // -- taxa --
  int n = 0;                              // active taxa, at least 3
  int nodes = 0;                          // 2n - 1
  int all_taxa = 0;                       // taxa of the matrix
  std::span<std::int32_t> pack_to_taxon;  // internal number to matrix row, all taxa
  std::span<std::int32_t> taxon_to_pack;

  // -- packing --
  std::span<pack_entry> entries;
  std::array<std::span<field_record>, packing_groups> fields;
  std::array<int, packing_groups> field_count{};      // fields, padding included
  std::array<int, packing_groups> group_words{};      // words
  std::array<int, packing_groups + 1> group_start{};  // word offset of each group; last: nwords
  int nwords = 0;
  std::span<std::int32_t> word_weight;  // a weight for each word of groups 0 to 2; word-weight mode
  std::span<std::int32_t> field_weight;  // what the kernels read; made by bind_kernels
  std::span<word> weight_planes;         // likewise
  bool long_words = true;                // kernels of words wider than 32 bits may be used
  bool uniform_mode = true;
  bool per_char_mode = false;
  bool implied_on = false;      // scores are fits; per_char_mode is on, base_steps is 0
  bool has_wide = false;        // some characters are in wide sets
  bool has_continuous = false;  // some of those score in fractions of a unit
  bool has_asymmetric = false;  // of some of those the length depends on the root
  std::int64_t base_steps = 0;  // constant steps removed while packing
  wide_data wide;               // characters that the words don't hold
  std::shared_ptr<whole_tree_characters> whole;  // ... and that no sets do; null: there are none

  // -- implied weights; empty without them --
  double base_fit = 0;                 // weighted fit of characters that are the same on all trees
  std::span<fit_counter> counters;     // by entry
  std::span<std::int32_t> counter_of;  // by field, as `field_weight`
  std::span<double> step_cost;         // likewise
  std::span<word> coarse_costs;
  std::span<set_counter> fit_sets;      // characters that are weighted together
  std::span<double> base_set_sums;      // by set: of characters that are the same on all trees
  std::span<std::int32_t> set_members;  // counters of the sets, set by set

  // -- the tree in work and its sets --
  tree_arrays tree;           // four arrays of `nodes` entries
  std::span<node_sets> sets;  // by node
  // Where the sets of a kind start: sets[v].branch == branch_base + v * set_stride. Passes, waves
  // and scans go by these, so sets change places by their words, not by their pointers.
  word* down_base = nullptr;
  word* final_base = nullptr;
  word* unions_base = nullptr;
  word* branch_base = nullptr;
  std::size_t set_stride = 0;  // words between neighbours: nwords rounded up to 16
  kernel_layout layout;        // what the kernels know of the word arrays
  kernel_slots kernels;        // bound by bind_kernels
  bool in_swap = false;        // a swapper holds the tree; cluster bookkeeping is on

  undo_log undo;  // see begin_undo

  // -- clusters (swapper) --
  std::span<std::int32_t> cluster_of;  // by node
  std::span<cluster_record> clusters;
  word* union_base = nullptr;  // clusters[c].union_now == union_base + c * set_stride
  int cluster_count = 0;

  // -- scratch, sized at preparation; no allocation inside passes and swaps --
  std::span<std::int32_t> node_list;   // nodes + 1
  std::span<std::int32_t> node_stack;  // 2 * nodes + 2
};

}  // namespace zeb
