// The kernels, written once over a vector type `V` and compiled once per width. Included only by
// the files that make the tables; everything is in an unnamed namespace, so that code made for
// wider instructions can't be linked in place of another width's. For the same reason nothing from
// the standard library is called here.
//
// The idea (word-parallel Fitch sets; Ronquist 1998, Moilanen 1999, White and Holland 2011): a word
// holds several state sets side by side, and carries within a field tell whether it is empty, so a
// whole vector of characters is compared without a branch. `V` supplies
//   type, words (32-bit words in it), load, store, zero, and_, or_, andnot(a, b) = ~a & b, same,
//   empties<G>(x)  one flag bit in each field of `x` without a bit: the lowest bit of a field in
//                  group 0, the highest in the others
//   spread<G>(e)   all bits of each flagged field
//   choose(m, a, b)  a where m has bits, b elsewhere
//   count, count_zero, add_count(c, e) (flags of e added), twice(c), sum(a, b), total(c)
//   chunk          vectors between two looks at the bound
//   has_digits, count_digits(e, end, step, digits)  as sum_of_digits, if
//                  there is a faster way
//   add_bytes<G>(c, e, costs, step)  c with the byte of each flag added, from slices of bytes
//   `step`
//                  words apart; see fit_layout::coarse_costs
//   nonzero(e)     a bit for each 32-bit word of `e` that has bits
//   has_within, within(c0, c1, c2, c3, bound)  a bit for each total at or below the bound
#pragma once

#include "engine/kernels/kernels.h"

namespace zeb {
namespace {

/// First word, and first field, of each set group.
template <int G>
std::int32_t group_begin(const kernel_layout& layout) {
  if constexpr (G == 0) return 0;
  if constexpr (G == 1) return layout.end0;
  if constexpr (G == 2) return layout.end1;
  return layout.end2;
}
template <int G>
std::int32_t group_end(const kernel_layout& layout) {
  if constexpr (G == 0) return layout.end0;
  if constexpr (G == 1) return layout.end1;
  if constexpr (G == 2) return layout.end2;
  return layout.end3;
}

template <int G>
constexpr int field_width = G == 0   ? 2
                            : G == 1 ? 4
                            : G == 2 ? 8
                                     : 32;

/// Where the fields of each set group begin in arrays by field.
struct field_numbers {
  explicit field_numbers(const kernel_layout& layout)
      : first{0, layout.end0 * 16, layout.end0 * 16 + (layout.end1 - layout.end0) * 8,
              layout.end0 * 16 + (layout.end1 - layout.end0) * 8 + (layout.end2 - layout.end1) * 4},
        begin{0, layout.end0, layout.end1, layout.end2} {}
  /// Number of the first field of word `w`.
  template <int G>
  std::int32_t of_word(std::int32_t w) const {
    return first[G] + (w - begin[G]) * (32 / field_width<G>);
  }
  std::int32_t first[4];
  std::int32_t begin[4];
};

/// Bytes with several flags, and how far the first of them is from the top of its byte.
template <int G>
constexpr int flags_in_byte = G < 2 ? 8 / field_width<G> : 1;
template <int G>
constexpr int below_top = G == 0   ? 7
                          : G == 1 ? 4
                                   : 0;

// ---- how flagged fields are added up ----

/// Every field weighs 1.
template <class V>
struct uniform_cost {
  explicit uniform_cost(const kernel_layout&) {}
  template <int G>
  typename V::count add(typename V::count c, typename V::type e, std::int32_t) const {
    return V::add_count(c, e);
  }
};

/// Weights by binary digits, from the highest: n flagged fields cost a bit count for each digit,
/// whatever the weights. The planes of digits lie `step` words apart before `end`. Tried adding a
/// vector of weights under a mask for each field of a word: slower than this for weights below
/// 2,000, that is for all that occur.
template <class V>
inline typename V::count sum_of_digits(typename V::type e, const word* end, std::size_t step,
                                       std::int32_t digits) {
  if constexpr (V::has_digits) {
    return V::count_digits(e, end, step, digits);
  } else {
    typename V::count s = V::count_zero();
    for (std::int32_t d = digits; d > 0; --d) {
      end -= step;
      s = V::add_count(V::twice(s), V::and_(e, V::load(end)));
    }
    return s;
  }
}

template <class V>
struct digit_cost {
  explicit digit_cost(const kernel_layout& layout)
      : step(static_cast<std::size_t>(layout.end3)),
        digits(layout.plane_count),
        end(layout.weight_planes + static_cast<std::size_t>(digits) * step) {}
  template <int G>
  typename V::count add(typename V::count c, typename V::type e, std::int32_t w) const {
    return V::sum(c, sum_of_digits<V>(e, end + w, step, digits));
  }
  std::size_t step;
  std::int32_t digits;
  const word* end;
};

// ---- costs of joining ----

/// Adds up the cost of the fields that are empty in `operand(w)`, and stops soon after the sum has
/// passed `bound`. One look at the bound is a horizontal sum and a branch, so there is one for each
/// `V::chunk` vectors only.
template <class V, int G, class C, class F>
inline bool add_group(const C& cost, const F& operand, const kernel_layout& layout,
                      std::int32_t bound, typename V::count& c) {
  const std::int32_t end = group_end<G>(layout);
  std::int32_t w = group_begin<G>(layout);
  while (w < end) {
    const std::int32_t stop = end - w > V::chunk * V::words ? w + V::chunk * V::words : end;
    for (; w < stop; w += V::words)
      c = cost.template add<G>(c, V::template empties<G>(operand(w)), w);
    if (V::total(c) > bound) return false;
  }
  return true;
}

template <class V, class C, class F>
inline std::int32_t bounded_cost(const F& operand, const kernel_layout& layout,
                                 std::int32_t bound) {
  const C cost(layout);
  typename V::count c = V::count_zero();
  if (add_group<V, 0>(cost, operand, layout, bound, c) &&
      add_group<V, 1>(cost, operand, layout, bound, c) &&
      add_group<V, 2>(cost, operand, layout, bound, c))
    add_group<V, 3>(cost, operand, layout, bound, c);
  return V::total(c);
}

template <class V, class C>
std::int32_t cost_pair(const word* clip, const word* branch, const kernel_layout& layout,
                       std::int32_t bound) {
  return bounded_cost<V, C>(
      [=](std::int32_t w) { return V::and_(V::load(clip + w), V::load(branch + w)); }, layout,
      bound);
}

/// Most candidates are over the bound on the most variable block of words alone. Those blocks of
/// four candidates are summed up and compared at once, so that the usual four failures touch one
/// cache line each and cost one branch, always taken the same way; only what passes is costed by
/// itself. Tried a look after every second vector of all words instead: twice as slow.
template <class V, int G, class C>
inline int scan_by_block(const word* clip, const word* base, std::size_t stride,
                         const std::int32_t* items, int from, int count,
                         const kernel_layout& layout, std::int32_t bound, std::int32_t* cost) {
  const C way(layout);
  const std::int32_t block = layout.head;
  const auto branch_of = [=](int i) { return base + static_cast<std::size_t>(items[i]) * stride; };
  const auto head_of = [=](int i) {
    const word* const branch = branch_of(i);
    typename V::count c = V::count_zero();
    for (std::int32_t w = block; w < block + words_per_block; w += V::words)
      c = way.template add<G>(
          c, V::template empties<G>(V::and_(V::load(clip + w), V::load(branch + w))), w);
    return c;
  };
  const auto finished = [&](int i) {
    *cost = cost_pair<V, C>(clip, branch_of(i), layout, bound);
    return *cost <= bound;
  };
  // The blocks of so many candidates don't stay in the cache between two scans, and lie in no
  // order: waiting for them took most of the time. Fewer are best left to the processor.
  constexpr int many = 4096;
  constexpr int ahead = 16;
  const int asked_ahead = count > many ? count - ahead - 3 : 0;
  int i = from;
  for (; i + 4 <= count; i += 4) {
    if (i < asked_ahead)
      for (int k = i + ahead; k < i + ahead + 4; ++k) __builtin_prefetch(branch_of(k) + block);
    for (unsigned within =
             V::within(head_of(i), head_of(i + 1), head_of(i + 2), head_of(i + 3), bound);
         within != 0; within &= within - 1) {
      const int passed = i + __builtin_ctz(within);
      if (finished(passed)) return passed;
    }
  }
  for (; i < count; ++i)
    if (finished(i)) return i;
  return count;
}

template <class V, class C>
int scan_pairs(const word* clip, const word* base, std::size_t stride, const std::int32_t* items,
               int from, int count, const kernel_layout& layout, std::int32_t bound,
               std::int32_t* cost) {
  if constexpr (V::has_within) {
    if (layout.head < layout.end0)
      return scan_by_block<V, 0, C>(clip, base, stride, items, from, count, layout, bound, cost);
    if (layout.head < layout.end1)
      return scan_by_block<V, 1, C>(clip, base, stride, items, from, count, layout, bound, cost);
    if (layout.head < layout.end2)
      return scan_by_block<V, 2, C>(clip, base, stride, items, from, count, layout, bound, cost);
    if (layout.head < layout.end3)
      return scan_by_block<V, 3, C>(clip, base, stride, items, from, count, layout, bound, cost);
  }
  for (int i = from; i < count; ++i) {
    const word* const branch = base + static_cast<std::size_t>(items[i]) * stride;
    *cost = cost_pair<V, C>(clip, branch, layout, bound);
    if (*cost <= bound) return i;
  }
  return count;
}

// ---- sets of one node ----

/// Preliminary sets of one vector: the intersection, or the union where that is empty. `failed`
/// gets the flags of the latter; `unions` a full field for them, by which the final pass knows.
template <class V, int G>
inline typename V::type down_sets(typename V::type left, typename V::type right,
                                  typename V::type& unions, typename V::type& failed) {
  const auto x = V::and_(left, right);
  const auto either = V::or_(left, right);
  failed = V::template empties<G>(x);
  const auto m = V::template spread<G>(failed);
  unions = V::or_(either, m);
  return V::or_(x, V::and_(either, m));
}

/// Final set: the ancestor's where the node's own contains it; elsewhere the node's own with what
/// the ancestor's and the descendants' union share.
template <class V, int G>
inline typename V::type final_sets(typename V::type ancestor, typename V::type down,
                                   typename V::type unions) {
  const auto outside = V::andnot(down, ancestor);
  const auto contained = V::template spread<G>(V::template empties<G>(outside));
  return V::choose(contained, ancestor, V::or_(V::and_(unions, ancestor), down));
}
template <class V, int G>
inline typename V::type terminal_branch(typename V::type ancestor, typename V::type down) {
  const auto outside = V::andnot(down, ancestor);
  const auto contained = V::template spread<G>(V::template empties<G>(outside));
  return V::or_(ancestor, V::andnot(contained, down));
}

template <class V, int G, class C>
inline typename V::count down_group(const C& cost, const word* left, const word* right, word* down,
                                    word* unions, const kernel_layout& layout,
                                    typename V::count c) {
  const std::int32_t end = group_end<G>(layout);
  for (std::int32_t w = group_begin<G>(layout); w < end; w += V::words) {
    typename V::type u, e;
    const auto d = down_sets<V, G>(V::load(left + w), V::load(right + w), u, e);
    V::store(down + w, d);
    V::store(unions + w, u);
    c = cost.template add<G>(c, e, w);
  }
  return c;
}
template <class V, class C>
std::int64_t node_down(const word* left, const word* right, word* down, word* unions,
                       const kernel_layout& layout) {
  const C cost(layout);
  typename V::count c = V::count_zero();
  c = down_group<V, 0>(cost, left, right, down, unions, layout, c);
  c = down_group<V, 1>(cost, left, right, down, unions, layout, c);
  c = down_group<V, 2>(cost, left, right, down, unions, layout, c);
  c = down_group<V, 3>(cost, left, right, down, unions, layout, c);
  return V::total(c);
}

template <class V, int G>
inline void final_group(const word* ancestor, const word* down, const word* unions, word* final,
                        word* branch, const kernel_layout& layout) {
  const std::int32_t end = group_end<G>(layout);
  for (std::int32_t w = group_begin<G>(layout); w < end; w += V::words) {
    const auto a = V::load(ancestor + w);
    const auto f = final_sets<V, G>(a, V::load(down + w), V::load(unions + w));
    V::store(final + w, f);
    V::store(branch + w, V::or_(f, a));
  }
}
template <class V>
void node_final(const word* ancestor, const word* down, const word* unions, word* final,
                word* branch, const kernel_layout& layout) {
  final_group<V, 0>(ancestor, down, unions, final, branch, layout);
  final_group<V, 1>(ancestor, down, unions, final, branch, layout);
  final_group<V, 2>(ancestor, down, unions, final, branch, layout);
  final_group<V, 3>(ancestor, down, unions, final, branch, layout);
}

template <class V, int G>
inline void final_terminal_group(const word* ancestor, const word* down, word* branch,
                                 const kernel_layout& layout) {
  const std::int32_t end = group_end<G>(layout);
  for (std::int32_t w = group_begin<G>(layout); w < end; w += V::words)
    V::store(branch + w, terminal_branch<V, G>(V::load(ancestor + w), V::load(down + w)));
}
template <class V>
void node_final_terminal(const word* ancestor, const word* down, word* branch,
                         const kernel_layout& layout) {
  final_terminal_group<V, 0>(ancestor, down, branch, layout);
  final_terminal_group<V, 1>(ancestor, down, branch, layout);
  final_terminal_group<V, 2>(ancestor, down, branch, layout);
  final_terminal_group<V, 3>(ancestor, down, branch, layout);
}

}  // namespace
}  // namespace zeb
