// The kernels: loops over packed words, pointers in, one number out. They know words, masks and
// bounds and nothing else. One table of them per instruction set; slots are bound once per mode.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zeb {

using word = std::uint32_t;

/// The tree in work, by node. Spans of `nodes` entries each.
struct tree_arrays {
  std::span<std::int32_t> anc;  // ancestor; at the root: next free internal node during a build
  std::span<std::int32_t> sister;
  std::span<std::int32_t> first;  // descendants; -1 or unspecified at terminals
  std::span<std::int32_t> second;
};

/// Word ranges of groups 0, 1 and 2, each padded with neutral words (all ones in every operand) to
/// a multiple of 16 words, so that every width runs without a tail.
struct kernel_layout {
  std::int32_t end0 = 0;                      // words of group 0
  std::int32_t end1 = 0;                      // running total behind group 1
  std::int32_t end2 = 0;                      // running total behind group 2
  const std::int32_t* word_weight = nullptr;  // by word; word-weight mode
  const std::int32_t* field_weight =
      nullptr;  // by field of groups 0 to 2 in order; per-character mode
};

/// Weighted steps added where `clip` and `branch` don't meet, summed over groups 0 to 2. A result
/// at or below `bound` is exact; above it, the loop may have stopped early and the value only says
/// "over".
using pair_kernel = std::int32_t (*)(const word* clip, const word* branch,
                                     const kernel_layout& layout, std::int32_t bound);
/// The same against the union of `a` and `b`: a lower bound for both.
using triple_kernel = std::int32_t (*)(const word* clip, const word* a, const word* b,
                                       const kernel_layout& layout, std::int32_t bound);
/// The pair kernel over many candidates: operand i is `base + items[i] * stride`. Returns the first
/// i in [from, count) whose cost against `clip` is at or below `bound`, with that cost in `*cost`;
/// `count` when there is none. The clip stays in registers; the searches spend their time here.
using scan_kernel = int (*)(const word* clip, const word* base, std::size_t stride,
                            const std::int32_t* items, int from, int count,
                            const kernel_layout& layout, std::int32_t bound, std::int32_t* cost);
/// Down-pass of one node: writes `down` and `unions` from the descendants' `down`; returns steps.
using down_kernel = std::int64_t (*)(const word* left, const word* right, word* down, word* unions,
                                     const kernel_layout& layout);
/// Final pass of an internal node: writes `final` and `branch` from the ancestor's `final`.
using final_kernel = void (*)(const word* ancestor_final, const word* down, const word* unions,
                              word* final, word* branch, const kernel_layout& layout);
/// Final pass of a terminal: writes `branch`.
using final_terminal_kernel = void (*)(const word* ancestor_final, const word* down, word* branch,
                                       const kernel_layout& layout);

/// One scoring mode in one width.
struct kernel_slots {
  pair_kernel cost_pair = nullptr;
  triple_kernel cost_triple = nullptr;
  scan_kernel scan_pairs = nullptr;
  down_kernel node_down = nullptr;
  final_kernel node_final = nullptr;
  final_terminal_kernel node_final_terminal = nullptr;
  int width_bits = 32;
};

}  // namespace zeb
