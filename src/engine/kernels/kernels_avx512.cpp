// The 512-bit kernels. Compiled with wider instructions on: see kernel_forms.h for what may not be
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

struct wide512 {
  using type = __m512i;
  using count = __m512i;
  static constexpr std::int32_t words = 16;
  static constexpr std::int32_t chunk = 4;
  static constexpr bool has_within = true;
  static constexpr bool has_digits = false;

  static type load(const word* p) { return _mm512_load_si512(p); }
  static void store(word* p, type v) { _mm512_store_si512(p, v); }
  static type and_(type a, type b) { return _mm512_and_si512(a, b); }
  static type or_(type a, type b) { return _mm512_or_si512(a, b); }
  static type andnot(type a, type b) { return _mm512_andnot_si512(a, b); }
  static bool same(type a, type b) { return _mm512_cmpneq_epi64_mask(a, b) == 0; }
  static unsigned nonzero(type e) { return _mm512_test_epi32_mask(e, e); }
  static type choose(type m, type a, type b) {
    return _mm512_ternarylogic_epi64(m, a, b, 0xca);  // m ? a : b
  }

  template <int G>
  static type high() {
    if constexpr (G == 1) return _mm512_set1_epi8(static_cast<char>(0x88));
    if constexpr (G == 2) return _mm512_set1_epi8(static_cast<char>(0x80));
    return _mm512_set1_epi32(static_cast<int>(0x80000000U));
  }
  template <int G>
  static type empties(type x) {
    constexpr int neither = 0x02;  // ~(a | b) & c
    if constexpr (G == 0)
      return _mm512_ternarylogic_epi64(_mm512_srli_epi64(x, 1), x, _mm512_set1_epi8(0x55), neither);
    const type top = high<G>();
    const type rest = _mm512_xor_si512(top, _mm512_set1_epi8(-1));
    return _mm512_ternarylogic_epi64(_mm512_add_epi32(_mm512_and_si512(x, rest), rest), x, top,
                                     neither);
  }
  template <int G>
  static type spread(type e) {
    if constexpr (G == 0) return _mm512_or_si512(e, _mm512_add_epi32(e, e));
    constexpr int below = G == 1 ? 3 : G == 2 ? 7 : 31;
    return _mm512_or_si512(e, _mm512_sub_epi32(e, _mm512_srli_epi32(e, below)));
  }

  static count count_zero() { return _mm512_setzero_si512(); }
  static count add_count(count c, type e) { return _mm512_add_epi64(c, _mm512_popcnt_epi64(e)); }
  template <int G>
  static count add_bytes(count c, type e, const word* costs, std::size_t step) {
    for (int i = 0; i < flags_in_byte<G>; ++i, costs += step) {
      const __mmask64 flagged = _mm512_movepi8_mask(
          _mm512_slli_epi32(e, static_cast<unsigned>(below_top<G> - i * field_width<G>)));
      c = _mm512_add_epi64(
          c, _mm512_sad_epu8(_mm512_maskz_loadu_epi8(flagged, costs), _mm512_setzero_si512()));
    }
    return c;
  }
  static count twice(count c) { return _mm512_add_epi64(c, c); }
  static count sum(count a, count b) { return _mm512_add_epi64(a, b); }
  static std::int32_t total(count c) {
    return static_cast<std::int32_t>(_mm512_reduce_add_epi64(c));
  }
  static unsigned within(count c0, count c1, count c2, count c3, std::int32_t bound) {
    const type a = _mm512_add_epi64(_mm512_unpacklo_epi64(c0, c1), _mm512_unpackhi_epi64(c0, c1));
    const type b = _mm512_add_epi64(_mm512_unpacklo_epi64(c2, c3), _mm512_unpackhi_epi64(c2, c3));
    const __m256i x = _mm256_add_epi64(_mm512_castsi512_si256(a), _mm512_extracti64x4_epi64(a, 1));
    const __m256i y = _mm256_add_epi64(_mm512_castsi512_si256(b), _mm512_extracti64x4_epi64(b, 1));
    const __m256i totals = _mm256_add_epi64(_mm256_permute2x128_si256(x, y, 0x20),
                                            _mm256_permute2x128_si256(x, y, 0x31));
    return _mm256_cmple_epi64_mask(totals, _mm256_set1_epi64x(bound));
  }
};

}  // namespace

kernel_slots kernels_512(scoring_mode mode) {
  return slots_for_mode<wide512, uniform_cost<wide512>>(mode, 512);
}

}  // namespace zeb
#endif
