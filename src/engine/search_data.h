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

#include "engine/kernels.h"

namespace zeb {

constexpr int packing_groups = 7;
constexpr std::array<std::uint32_t, packing_groups> field_mask = {
    0x3, 0xf, 0xff, 0xffff, 0xffffffff, 0xffff, 0xffffffff};
constexpr std::array<int, packing_groups> field_bits = {2, 4, 8, 16, 32, 16, 32};
constexpr std::array<int, packing_groups> fields_per_word = {16, 8, 4, 2, 1, 2, 1};
constexpr double no_bound = 2147483647.0;
constexpr double unknown_score = 4294967295.0;
constexpr double no_score = -1.0;

/// A character that takes part in searches, in matrix order.
struct pack_entry {
  std::int32_t character;
  std::int32_t group;          // current packing group
  std::int32_t natural_group;  // given by the classifier
  std::int32_t fields;         // fields for one repetition
  std::int32_t repeat;         // repetitions of those fields
  std::int32_t weight;         // weight of the word or field
  std::int32_t divisor;        // 0, or the uniform cost a step-matrix character was reduced by
  std::int32_t first_field;    // position of its first field in its group
};

/// One per field of every group, padding included, in the order of the fields in the words.
struct field_record {
  const std::int32_t* cost_table;  // groups 5 and 6
  std::int32_t weight;
  std::int32_t min_steps;  // after the constant part was removed
  std::int32_t set_flags;
  std::int32_t steps;  // implied weighting only: steps on the tree in work
  std::int32_t homoplasy_base;
  std::int32_t max_steps;
  std::uint8_t asymmetric;
  std::uint8_t ordered_matrix;
  std::uint8_t nstates;
  const double* fit_table;
  const double* fit_base;
  double own_k;
  double k_ratio;
  std::int32_t character;  // matrix character; -1 padding
};

/// Five word arrays of `nwords` words each, contiguous and aligned to 64 bytes.
struct node_sets {
  word* down;        // preliminary sets
  word* final;       // final sets; not kept at terminals
  word* unions;      // union of the descendants, plus a full field where they don't intersect
  word* branch;      // final of this node or final of its ancestor: what an attachment meets
  word* branch_alt;  // only with asymmetric characters, else null
};

/// A node cluster of the swapper.
struct cluster_record {
  word* union_now;           // union of the `branch` sets of its nodes, widened during a clip
  word* union_saved;         // to restore from after a clip
  std::int32_t* main_nodes;  // its nodes in the main tree
  std::int32_t* clip_nodes;  // its nodes in the clipped subtree
  std::int32_t n_main;
  std::int32_t n_clip;
  std::int32_t dirty;        // some word was widened in this clip
  std::int32_t dirty_first;  // range of words to restore
  std::int32_t dirty_last;
};

struct search_data {
  // -- taxa --
  int n = 0;                              // active taxa
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
  bool uniform_mode = true;
  bool per_char_mode = false;
  bool implied_weighting = false;
  bool has_continuous = false;
  bool has_wide_fields = false;  // any field in groups 3 to 6
  bool has_asymmetric = false;
  std::int64_t base_steps = 0;  // constant steps removed while packing
  double base_cont = 0;         // constant cost of continuous characters

  // -- the tree in work and its sets --
  tree_arrays tree;                   // four arrays of `nodes` entries
  std::span<node_sets> primary_sets;  // allocated once
  std::span<node_sets> sets;          // working copy, which all kernels read
  word* branch_base = nullptr;        // sets[v].branch == branch_base + v * set_stride, for scans
  std::size_t set_stride = 0;         // words between neighbours: nwords rounded up to 16
  kernel_layout layout;               // what the kernels know of the word arrays
  kernel_slots kernels;               // bound by bind_kernels
  bool in_swap = false;               // a swapper holds the tree; cluster bookkeeping is on

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
  int long_words = 2;            // `xbits`: bit 2 set means words wider than 32 bits may be used
  bool implied_weights = false;  // `piwe`; searches refuse it until it is built
};
extern engine_settings engine;

/// Packs the matrix with its present settings into a fresh `search_data` (kept under the
/// optimisation lock until a change drops it), and binds the kernels. `full` false: only weights or
/// the active set changed. `silent` keeps "Packing data" from showing. Cheap when nothing changed.
void prepare_search_data(bool full, bool silent);
/// Fills the kernel slots from the mode and the processor.
void bind_kernels(search_data& data);

/// Full down and final pass over the tree given by its ancestor array (internal numbering, binary,
/// `nodes` entries). Fills the tree arrays and all node sets; returns the score. With `in_swap` the
/// cluster unions are made as well.
double tree_length(search_data& data, std::span<const std::int32_t> anc);
/// Rebuilds sister and descendant arrays from data.tree.anc.
void rebuild_links(search_data& data);

/// The word wave after the tree changed at `start`. After a clip: `start` is the sister that took
/// the parent's place, `clip` the detached subtree's root (its own sets are remade as a tree of its
/// own). After putting back or attaching: `clip` is -1.
void repair_after_clip(search_data& data, int start, int clip);
/// The wave after terminal or subtree `node` was attached.
void repair_after_insert(search_data& data, int node);

/// Attach `node` (with `joint` as the internal node to use) on the branch below `target`; detach
/// the reverse. Keep all four arrays. No sets are touched.
void attach(tree_arrays& tree, int node, int joint, int target);
/// Returns the joint freed; the sister takes its place.
int detach(tree_arrays& tree, int node);

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
