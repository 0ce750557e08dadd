// The 256-bit kernels. Compiled with wider instructions on: see kernel_forms.h for what may not be
// called here.
#if defined(__x86_64__)
#if defined(__GNUC__) && !defined(__clang__)
// GCC 12's own header reads "undefined" vectors on purpose and warns of it.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include "engine/kernels/kernel_choice.h"
#include "engine/kernels/slot_tables.h"

namespace zeb {
namespace {

struct wide256 {
  using type = __m256i;
  using count = __m256i;
  static constexpr std::int32_t words = 8;
  static constexpr std::int32_t chunk = 4;
  static constexpr bool has_within = true;
  static constexpr bool has_digits = true;

  static type load(const word* p) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(p)); }
  static void store(word* p, type v) { _mm256_store_si256(reinterpret_cast<__m256i*>(p), v); }
  static type and_(type a, type b) { return _mm256_and_si256(a, b); }
  static type or_(type a, type b) { return _mm256_or_si256(a, b); }
  static type andnot(type a, type b) { return _mm256_andnot_si256(a, b); }
  static bool same(type a, type b) {
    const type d = _mm256_xor_si256(a, b);
    return _mm256_testz_si256(d, d);
  }
  static unsigned nonzero(type e) {
    const type empty = _mm256_cmpeq_epi32(e, _mm256_setzero_si256());
    return 255U & ~static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(empty)));
  }
  static type choose(type m, type a, type b) {
    return _mm256_or_si256(_mm256_and_si256(m, a), _mm256_andnot_si256(m, b));
  }

  template <int G>
  static type high() {
    if constexpr (G == 1) return _mm256_set1_epi8(static_cast<char>(0x88));
    if constexpr (G == 2) return _mm256_set1_epi8(static_cast<char>(0x80));
    return _mm256_set1_epi32(static_cast<int>(0x80000000U));
  }
  template <int G>
  static type empties(type x) {
    if constexpr (G == 0)
      return _mm256_andnot_si256(_mm256_or_si256(_mm256_srli_epi64(x, 1), x),
                                 _mm256_set1_epi8(0x55));
    const type top = high<G>();
    const type rest = _mm256_xor_si256(top, _mm256_set1_epi8(-1));
    return _mm256_andnot_si256(
        _mm256_or_si256(_mm256_add_epi32(_mm256_and_si256(x, rest), rest), x), top);
  }
  template <int G>
  static type spread(type e) {
    if constexpr (G == 0) return _mm256_or_si256(e, _mm256_add_epi32(e, e));
    constexpr int below = G == 1 ? 3 : G == 2 ? 7 : 31;
    return _mm256_or_si256(e, _mm256_sub_epi32(e, _mm256_srli_epi32(e, below)));
  }

  static count count_zero() { return _mm256_setzero_si256(); }
  /// Bit counts of the nibbles by table.
  static type count_in_bytes(type e) {
    const type table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4,  //
                                        0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
    const type low = _mm256_set1_epi8(0x0f);
    return _mm256_add_epi8(
        _mm256_shuffle_epi8(table, _mm256_and_si256(e, low)),
        _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi32(e, 4), low)));
  }
  /// Added up within each 64 bits.
  static count add_count(count c, type e) {
    return _mm256_add_epi64(c, _mm256_sad_epu8(count_in_bytes(e), _mm256_setzero_si256()));
  }
  /// A byte holds four flags at most, and so the sum over six digits: they are added up there.
  static count count_digits(type e, const word* end, std::size_t step, std::int32_t digits) {
    count s = _mm256_setzero_si256();
    while (digits > 0) {
      const std::int32_t now = digits < 6 ? digits : 6;
      type bytes = _mm256_setzero_si256();
      for (std::int32_t d = 0; d < now; ++d) {
        end -= step;
        bytes = _mm256_add_epi8(_mm256_add_epi8(bytes, bytes),
                                count_in_bytes(_mm256_and_si256(e, load(end))));
      }
      s = _mm256_add_epi64(_mm256_sll_epi64(s, _mm_cvtsi32_si128(now)),
                           _mm256_sad_epu8(bytes, _mm256_setzero_si256()));
      digits -= now;
    }
    return s;
  }
  template <int G>
  static count add_bytes(count c, type e, const word* costs, std::size_t step) {
    for (int i = 0; i < flags_in_byte<G>; ++i, costs += step) {
      const type flagged = _mm256_cmpgt_epi8(
          _mm256_setzero_si256(), _mm256_slli_epi32(e, below_top<G> - i * field_width<G>));
      c = _mm256_add_epi64(
          c, _mm256_sad_epu8(_mm256_and_si256(flagged, load(costs)), _mm256_setzero_si256()));
    }
    return c;
  }
  static count twice(count c) { return _mm256_add_epi64(c, c); }
  static count sum(count a, count b) { return _mm256_add_epi64(a, b); }
  static std::int32_t total(count c) {
    const __m128i half = _mm_add_epi64(_mm256_castsi256_si128(c), _mm256_extracti128_si256(c, 1));
    return _mm_cvtsi128_si32(_mm_add_epi64(half, _mm_unpackhi_epi64(half, half)));
  }
  static unsigned within(count c0, count c1, count c2, count c3, std::int32_t bound) {
    const type a = _mm256_add_epi64(_mm256_unpacklo_epi64(c0, c1), _mm256_unpackhi_epi64(c0, c1));
    const type b = _mm256_add_epi64(_mm256_unpacklo_epi64(c2, c3), _mm256_unpackhi_epi64(c2, c3));
    const type totals = _mm256_add_epi64(_mm256_permute2x128_si256(a, b, 0x20),
                                         _mm256_permute2x128_si256(a, b, 0x31));
    const type over = _mm256_cmpgt_epi64(totals, _mm256_set1_epi64x(bound));
    return 15U & ~static_cast<unsigned>(_mm256_movemask_pd(_mm256_castsi256_pd(over)));
  }
};

}  // namespace

kernel_slots kernels_256(scoring_mode mode) {
  return slots_for_mode<wide256, uniform_cost<wide256>>(mode, 256);
}

}  // namespace zeb
#endif
