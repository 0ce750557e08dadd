// The kernels: loops over packed words, pointers in, one number out. They know words, masks, links
// and bounds and nothing else. One table of them per instruction set; slots are bound once per
// mode.
//
// All widths give the same results for the same operands, word for word.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zeb {

using word = std::uint32_t;

/// Word ranges of all groups are multiples of this, so that every width runs without a tail.
constexpr int words_per_block = 16;

/// The tree in work, by node. Spans of `nodes` entries each.
struct tree_arrays {
  std::span<std::int32_t> anc;  // ancestor; at the root: next free internal node during a build
  std::span<std::int32_t> sister;
  std::span<std::int32_t> first;  // descendants; -1 or unspecified at terminals
  std::span<std::int32_t> second;
};

/// Four word arrays of `nwords` words each, aligned to 64 bytes.
struct node_sets {
  word* down;    // preliminary sets
  word* final;   // final sets; not kept at terminals
  word* unions;  // union of the descendants, plus a full field where they don't intersect
  word* branch;  // final of this node or final of its ancestor: what an attachment meets
};

/// What homoplasy costs: scale * h / (half + h), or by a table between whose entries it runs
/// straight, and beyond them on as at the end.
struct fit_curve {
  double scale = 1;
  double half = 1;
  const double* table = nullptr;  // null: none
  double entries_per_unit = 1;    // of h
  std::int32_t last = 1;          // entry of the table
};

/// Under implied weights: one character on the tree in work.
struct fit_counter {
  double weight;
  const double* fit;    // unweighted, by `steps`; of a character of a set, what goes into its sum
  std::int32_t steps;   // that the fields have cost so far
  std::int32_t set;     // -1: weighted by itself
  std::int32_t coarse;  // what is in `coarse_costs` for its fields
  std::int32_t first_field;  // its fields, in the order of `field_weight`, side by side
  std::int32_t fields;
  std::int32_t first_flag;    // bit by which the kernels flag the first field: 32 * word + bit
  std::int32_t flag_width;    // bits from one flag to the next
  std::int32_t concave_from;  // from so many steps on, none costs more than the one before
};

/// Characters that are weighted together: the curve is that of their weighted homoplasy, which is
/// summed in thousandths, so that sums are whole numbers and exact in any order.
struct set_counter {
  fit_curve curve;
  double sum;   // on the tree in work
  double here;  // the curve at `sum`
  // The joining that was costed last, and what it has made of the sum and the curve so far.
  std::uint64_t joining;
  double joined_sum;
  double joined;
  double most_gain;           // most that packed fields can add to the sum in one joining
  const std::int32_t* first;  // its counters
  std::int32_t count;
  set_counter* next;  // while counters move: another one that did
};

constexpr int coarse_slices = 4;
constexpr int most_coarse = 255;

/// What the fit kernels add up; fields in the order of `kernel_layout::field_weight`. All null
/// without implied weights.
struct fit_layout {
  fit_counter* counters = nullptr;
  const std::int32_t* counter_of = nullptr;  // by field: its character's counter
  // By field: what one more step of its character costs. Not kept for characters of sets.
  double* step_cost = nullptr;
  // By group: characters of several fields or in sets, whose costs depend on what else fails, lie
  // in words before this one.
  std::int32_t shared_end[4] = {};
  set_counter* sets = nullptr;
  std::uint64_t* joining = nullptr;  // joinings costed so far
  // The same costs from below, as whole multiples of 1 / coarse_scale up to `most_coarse`: scans
  // throw most candidates out by them. Each is the byte in which the kernels flag the field; where
  // several flags are in a byte, those of the next one are in the next slice of `end3` words.
  word* coarse_costs = nullptr;
  double coarse_scale = 1;
};

/// Word ranges of the packing groups, each padded with neutral words (all ones in every operand) to
/// a multiple of 16 words.
struct kernel_layout {
  std::int32_t end0 = 0;  // where the words of group 0 end, and those of the other groups
  std::int32_t end1 = 0;
  std::int32_t end2 = 0;
  std::int32_t end3 = 0;
  std::int32_t head = 0;  // first word of the block that scans look at first: the most variable one
  const std::int32_t* word_weight = nullptr;  // by word; word-weight mode
  // Weight of each field in order, padding included; per-character mode.
  const std::int32_t* field_weight = nullptr;
  // The same weights, one binary digit at a time: digit p of the weight of a field stands in word
  // `weight_planes[p * end3 + w]` at the bit by which the kernels flag that field.
  const word* weight_planes = nullptr;
  std::int32_t plane_count = 0;
  fit_layout fits;
};

/// A node cluster of the swapper.
struct cluster_record {
  word* union_now;           // union of the `branch` sets of its nodes, widened during a clip
  std::int32_t* main_nodes;  // its nodes in the main tree
  std::int32_t* clip_nodes;  // its nodes in the clipped subtree
  std::int32_t n_main;
  std::int32_t n_clip;
};

/// Words as they were before waves changed them, newest last, in pieces of `piece_words`.
struct undo_log {
  word** where = nullptr;         // where each piece came from
  word* old_words = nullptr;      // what stood there
  std::size_t where_size = 0;     // entries of `where`
  std::size_t words_size = 0;     // entries of `old_words`
  std::int32_t capacity = 0;      // pieces that fit both
  std::int32_t count = 0;         // pieces noted; above `capacity` once the log overflowed
  std::int32_t piece_words = 16;  // width of the kernels in force
  bool recording = false;
};

/// What passes and waves walk over.
struct pass_context {
  const std::int32_t* anc = nullptr;
  const std::int32_t* sister = nullptr;
  const std::int32_t* first = nullptr;
  const std::int32_t* second = nullptr;
  // Start of each kind of set; node v's words are at `v * stride`.
  word* down = nullptr;
  word* final = nullptr;
  word* unions = nullptr;
  word* branch = nullptr;
  std::size_t stride = 0;
  std::int32_t n = 0;                        // terminals; also the root's number
  std::int32_t* list = nullptr;              // scratch, `nodes` + 1 entries
  std::int32_t* stack = nullptr;             // scratch, 2 * `nodes` + 2 entries
  undo_log* undo = nullptr;                  // null: nothing is noted
  const std::int32_t* cluster_of = nullptr;  // null: no cluster bookkeeping
  cluster_record* clusters = nullptr;
};

/// Weighted steps added where `clip` and `branch` don't meet, summed over the set groups. A result
/// at or below `bound` is exact; above it, the loop may have stopped early and the value only says
/// "over".
using pair_kernel = std::int32_t (*)(const word* clip, const word* branch,
                                     const kernel_layout& layout, std::int32_t bound);
/// The pair kernel over many candidates: operand i is `base + items[i] * stride`. Returns the first
/// i in [from, count) whose cost against `clip` is at or below `bound`, with that cost in `*cost`;
/// `count` when there is none. The searches spend their time here.
using scan_kernel = int (*)(const word* clip, const word* base, std::size_t stride,
                            const std::int32_t* items, int from, int count,
                            const kernel_layout& layout, std::int32_t bound, std::int32_t* cost);
/// Down-pass of one node: writes `down` and `unions` from the descendants' `down`; returns steps.
using down_kernel = std::int64_t (*)(const word* left, const word* right, word* down, word* unions,
                                     const kernel_layout& layout);
/// Down-pass of `count` internal nodes, from the end of `order` to its start; returns steps.
using down_pass_kernel = std::int64_t (*)(const pass_context& tree, const std::int32_t* order,
                                          std::int32_t count, const kernel_layout& layout);
/// Final pass of `count` internal nodes in order and of the terminals that hang on them. The first
/// node must be the root of what is walked: its `final` becomes its `down`.
using final_pass_kernel = void (*)(const pass_context& tree, const std::int32_t* order,
                                   std::int32_t count, const kernel_layout& layout);
/// The waves; see repair_after_clip and repair_after_insert.
using clip_wave_kernel = void (*)(const pass_context& tree, std::int32_t start, std::int32_t clip,
                                  const kernel_layout& layout);
using insert_wave_kernel = void (*)(const pass_context& tree, std::int32_t node,
                                    const kernel_layout& layout);

// Under implied weights a failed field costs what one more step of its character does: the first
// one `step_cost`, further ones of the same character or set less. Sums are made in the order of
// the fields, so that every width gives the same bits.

/// Cost of joining in fit. A result below `bound` is exact; the loop stops at sum >= bound. Leaves
/// in the sets what the joining has made of them, for wide characters of the same sets to go on
/// from.
using fit_pair_kernel = double (*)(const word* clip, const word* branch,
                                   const kernel_layout& layout, double bound);
/// As scan_kernel: the first candidate whose cost is below `bound`.
using fit_scan_kernel = int (*)(const word* clip, const word* base, std::size_t stride,
                                const std::int32_t* items, int from, int count,
                                const kernel_layout& layout, double bound, double* cost);
/// The same by costs from below alone, of which `*cost` gets the sum: passes all that
/// fit_scan_kernel would, and a few more, for a fraction of the time.
using fit_bound_scan_kernel = fit_scan_kernel;
/// Counts the steps of joining in the characters (`add`) or takes them off again; keeps
/// `step_cost`. Taking off returns what they cost.
using fit_add_kernel = void (*)(const word* clip, const word* branch, const kernel_layout& layout);
using fit_remove_kernel = double (*)(const word* clip, const word* branch,
                                     const kernel_layout& layout);

struct fit_slots {
  fit_pair_kernel cost_pair = nullptr;
  fit_scan_kernel scan_pairs = nullptr;
  fit_bound_scan_kernel scan_bounds = nullptr;
  fit_add_kernel add_steps = nullptr;
  fit_remove_kernel remove_steps = nullptr;
};

/// One scoring mode in one width. Under implied weights `down_pass` counts the steps of each
/// character in its counter and returns nothing; the integer costs are those of weighted steps.
struct kernel_slots {
  pair_kernel cost_pair = nullptr;
  scan_kernel scan_pairs = nullptr;
  down_kernel remake_down = nullptr;  // for the sets alone: counts nothing
  down_pass_kernel down_pass = nullptr;
  final_pass_kernel final_pass = nullptr;
  clip_wave_kernel clip_wave = nullptr;
  insert_wave_kernel insert_wave = nullptr;
  fit_slots fit;  // implied weights only
  int width_bits = 32;
};

enum class scoring_mode {
  uniform,
  word_weights,
  per_character,
  implied,
};

}  // namespace zeb
