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
  std::int32_t group;           // packing group
  std::int32_t fields;          // fields for one repetition
  std::int32_t repeat;          // repetitions of those fields
  std::int32_t weight;          // weight of the word or field
  std::int32_t first_field;     // position of its first field in its group
  std::int32_t min_steps;       // least and most steps that any tree of these taxa can have
  std::int32_t max_steps;
  std::int32_t internal_steps;  // add to the homoplasy under implied weights
};

/// One per field of every group, padding included, in the order of the fields in the words.
struct field_record {
  std::int32_t weight;
  std::int32_t min_steps;       // after the constant part was removed
  std::int32_t homoplasy_base;  // internal steps, which add to the homoplasy
  std::int32_t max_steps;
  std::int32_t character;  // matrix character; -1 padding
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
  bool long_words = true;  // kernels of words wider than 32 bits may be used
  bool uniform_mode = true;
  bool per_char_mode = false;
  bool implied_on = false;   // scores are fits; per_char_mode is on, base_steps and base_cont are 0
  bool has_continuous = false;
  bool has_wide_fields = false;  // any field that needs the wide slots: groups 5 and 6
  bool has_asymmetric = false;
  std::int64_t base_steps = 0;  // constant steps removed while packing
  double base_cont = 0;         // constant cost of continuous characters

  // -- implied weights; empty without them --
  double concavity = 3.0;
  std::int32_t fit_offset = 0;         // largest `min_steps`: a counter's `steps` can't go below 0
  std::int32_t fit_size = 0;           // entries of the tables: one more than the largest `steps`
  std::span<double> fit;               // by `steps`: fit of that much homoplasy, 0 up to the offset
  std::span<double> fit_step;          // fit[i + 1] - fit[i]
  double base_fit = 0;                 // weighted fit of characters that are the same on all trees
  std::span<fit_counter> counters;     // by entry
  std::span<std::int32_t> counter_of;  // by field, as `field_weight`
  std::span<double> step_cost;         // likewise
  std::span<word> coarse_planes;

  // -- the tree in work and its sets --
  tree_arrays tree;                   // four arrays of `nodes` entries
  std::span<node_sets> primary_sets;  // allocated once
  std::span<node_sets> sets;          // working copy, which all kernels read
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

/// The data set in work; null before anything was packed.
extern search_data* current_search_data;

/// Settings of the engine that commands change.
struct engine_settings {
  int long_words = 2;        // `xbits`: bit 2 set means words wider than 32 bits may be used
  bool implied_on = false;   // scores are fits
  double concavity = 3.0;    // k, in steps of homoplasy: with k of them a character costs half
};
extern engine_settings engine;

/// Full down and final pass over the tree given by its ancestor array (internal numbering, binary,
/// `nodes` entries). Fills the tree arrays and all node sets; returns the score. With `in_swap` and
/// `cluster_count` above 0 the cluster unions (`union_now`) are widened by the new sets, so the
/// swapper empties them first.
double tree_length(search_data& data, std::span<const std::int32_t> anc);
/// The same over the tree in `data.tree`.
double full_pass(search_data& data);
/// Down and final pass over the subtree of `node` as a tree of its own (its ancestor isn't looked
/// at); returns its steps, without `base_steps`. At a terminal nothing is done. Under implied
/// weights the steps are added to the counters instead.
std::int64_t subtree_pass(search_data& data, int node);
/// Rebuilds sister and descendant arrays from data.tree.anc.
void rebuild_links(search_data& data);

/// The word wave after `clip` was detached and `start`, its sister, took the parent's place. Makes
/// the sets of the main tree and those of the subtree, whose root is `clip`, as two trees. With
/// `clip` -1: `start` is the node beside which something was attached (or put back), as
/// repair_after_insert(data, sister of start).
/// The sets of the free joint are left as they are and mean nothing. With `start` 0 and `clip` its
/// sister, still linked, nothing remains of the main tree, and only the subtree is done; putting it
/// back is repair_after_clip(data, 0, -1).
void repair_after_clip(search_data& data, int start, int clip);
/// The wave after terminal or subtree `node` was attached: its sets, as those of the tree, must
/// have been valid before. Those of the joint need not be.
void repair_after_insert(search_data& data, int node);
/// Waves with `in_swap` on also widen `union_now` of the cluster of each `branch` word written.

/// From now on every word that a wave, reroot_subtree or a cluster's widening changes is noted, so
/// that undo_sets can put all of them back at a fraction of a wave's cost. The log is emptied.
void begin_undo(search_data& data);
/// Puts back every word changed since begin_undo, cluster unions included, and empties the log
/// (recording goes on). Links are the caller's: they must be put back too. False if the log had
/// overflowed: nothing was put back; attach and repair with a wave instead.
bool undo_sets(search_data& data);
void end_undo(search_data& data);

/// Attach `node` (with `joint` as the internal node to use) on the branch below `target`; detach
/// the reverse. Keep all four arrays. No sets are touched. `target` is neither the root nor
/// terminal 0 (whose branch is that of its sister); `node` becomes the second descendant of the
/// joint.
void attach(tree_arrays& tree, int node, int joint, int target);
/// Returns the joint freed, which anc[node] still names; the sister takes its place. `node` is no
/// descendant of the root.
int detach(tree_arrays& tree, int node);
/// Turns the links of the subtree `clip` (detached, or the sister of terminal 0) so that `clip`
/// lies on the branch above `node` (a node of the subtree below a descendant of `clip`); no-op
/// where it does already. No sets.
void reroot_links(tree_arrays& tree, int node, int clip);
/// The same, and makes `down` and `unions` on the path. `final` of the path's nodes is zeroed, so
/// that the wave after attaching `clip` remakes it: until then `branch` sets in the subtree are
/// those of the old rooting.
void reroot_subtree(search_data& data, int node, int clip);

/// Conversions between matrix numbering (tree buffer: ntax taxa, polytomies, absent taxa) and the
/// internal one. `to_internal` prunes inactive taxa, re-roots on the outgroup; it returns false if
/// an active taxon is absent; polytomies are resolved arbitrarily (`resolve`) or refused.
bool to_internal(const search_data& data, std::span<const std::int32_t> buffer_tree,
                 std::span<std::int32_t> anc, bool resolve);
void to_buffer(const search_data& data, std::span<const std::int32_t> anc,
               std::span<std::int32_t> buffer_tree);

/// Equality of scores: exact for integers, within 1e-08 under fractional scoring.
bool same_score(const search_data& data, double a, double b);

}  // namespace zeb
