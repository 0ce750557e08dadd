// The 32-bit kernels, which are the reference for all others, and the 64-bit ones.
#include <array>
#include <bit>

#include "engine/kernels/kernel_choice.h"
#include "engine/kernels/slot_tables.h"

namespace zeb {
namespace {

constexpr std::array<std::uint8_t, 65536> make_counts() {
  std::array<std::uint8_t, 65536> counts{};
  for (std::uint32_t i = 1; i < 65536; ++i)
    counts[i] = static_cast<std::uint8_t>(counts[i >> 1] + (i & 1));
  return counts;
}

/// Set bits of every 16-bit value.
constinit const std::array<std::uint8_t, 65536> bitcount16 = make_counts();

/// `pattern` (32 bits) once or twice.
template <class T>
constexpr T repeated(std::uint32_t pattern) {
  if constexpr (sizeof(T) == 8) return (static_cast<T>(pattern) << 32) | pattern;
  return static_cast<T>(pattern);
}

template <int G>
constexpr std::uint32_t high_bits = G == 0   ? 0xaaaaaaaaU
                                    : G == 1 ? 0x88888888U
                                    : G == 2 ? 0x80808080U
                                             : 0x80000000U;
/// What both widths share; `T` is the machine word.
template <class T>
struct narrow {
  using type = T;
  using count = std::int32_t;
  // NOLINTNEXTLINE(bugprone-sizeof-expression): T may be the word itself
  static constexpr std::int32_t words = sizeof(T) / sizeof(word);
  static constexpr std::int32_t chunk = 1;
  static constexpr bool has_within = false;
  static constexpr bool has_digits = false;

  static T load(const word* p) {
    T v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
  }
  static void store(word* p, T v) { __builtin_memcpy(p, &v, sizeof v); }
  static T and_(T a, T b) { return a & b; }
  static T or_(T a, T b) { return a | b; }
  static T andnot(T a, T b) { return ~a & b; }
  static bool same(T a, T b) { return a == b; }
  static unsigned nonzero(T e) {
    if constexpr (words == 1) return e != 0;
    return static_cast<unsigned>(static_cast<std::uint32_t>(e) != 0) |
           static_cast<unsigned>(static_cast<std::uint64_t>(e) >> 32 != 0) << 1;
  }
  static T choose(T m, T a, T b) { return b ^ (m & (a ^ b)); }

  template <int G>
  static T empties(T x) {
    if constexpr (G == 0) return ~((x >> 1) | x) & repeated<T>(0x55555555U);
    // Adding all ones below a field's top bit carries into it unless those bits are all zero.
    constexpr T high = repeated<T>(high_bits<G>);
    return ~(((x & ~high) + ~high) | x) & high;
  }
  template <int G>
  static T spread(T e) {
    if constexpr (G == 0) return e | (e << 1);
    return e | (e - (e >> (field_width<G> - 1)));
  }

  template <int G>
  static count add_bytes(count c, T e, const word* costs, std::size_t step) {
    for (; e; e &= e - 1) {
      const int flag = std::countr_zero(e);
      const int slice = flags_in_byte<G> > 1 ? flag % 8 / field_width<G> : 0;
      c += reinterpret_cast<const unsigned char*>(costs +
                                                  static_cast<std::size_t>(slice) * step)[flag / 8];
    }
    return c;
  }

  static count count_zero() { return 0; }
  static count twice(count c) { return c + c; }
  static count sum(count a, count b) { return a + b; }
  static std::int32_t total(count c) { return c; }
};

struct narrow32 : narrow<std::uint32_t> {
  static count add_count(count c, type e) {
    return c + bitcount16[e & 0xffffU] + bitcount16[e >> 16];
  }
};

struct narrow64 : narrow<std::uint64_t> {
  static count add_count(count c, type e) {
    return c + bitcount16[e & 0xffffU] + bitcount16[(e >> 16) & 0xffffU] +
           bitcount16[(e >> 32) & 0xffffU] + bitcount16[e >> 48];
  }
};

// ---- ways of adding up that only the reference has ----

/// Flags of one word in 16 bits. Those of the two halves fall on different bits after a shift by
/// one position less or more than a half, so that one look-up counts all fields of the word.
template <int G>
std::uint32_t folded(std::uint32_t e) {
  if constexpr (G == 0) return (e | (e >> 15)) & 0xffffU;
  return (e | (e >> 17)) & 0xffffU;
}

struct folded_uniform_cost {
  explicit folded_uniform_cost(const kernel_layout&) {}
  template <int G>
  std::int32_t add(std::int32_t c, std::uint32_t e, std::int32_t) const {
    return c + bitcount16[folded<G>(e)];
  }
};

struct folded_uniform_cost64 {
  explicit folded_uniform_cost64(const kernel_layout&) {}
  template <int G>
  std::int32_t add(std::int32_t c, std::uint64_t e, std::int32_t) const {
    if constexpr (G == 0)
      return c + bitcount16[(e | (e >> 15)) & 0xffffU] +
             bitcount16[((e >> 32) | (e >> 47)) & 0xffffU];
    if constexpr (G == 3) return c + static_cast<std::int32_t>(((e >> 31) & 1) + (e >> 63));
    return c + bitcount16[((e >> 51) | (e >> 34) | (e >> 17) | e) & 0xffffU];
  }
};

struct word_weight_cost {
  explicit word_weight_cost(const kernel_layout& layout) : weights(layout.word_weight) {}
  template <int G>
  std::int32_t add(std::int32_t c, std::uint32_t e, std::int32_t w) const {
    return c + bitcount16[folded<G>(e)] * weights[w];
  }
  const std::int32_t* weights;
};

/// Each flagged field adds the weight of its own record.
struct field_weight_cost {
  explicit field_weight_cost(const kernel_layout& layout)
      : weights(layout.field_weight), numbers(layout) {}
  template <int G>
  std::int32_t add(std::int32_t c, std::uint32_t e, std::int32_t w) const {
    const std::int32_t* const of_word = weights + numbers.of_word<G>(w);
    for (; e; e &= e - 1) c += of_word[__builtin_ctz(e) / field_width<G>];
    return c;
  }
  const std::int32_t* weights;
  field_numbers numbers;
};

}  // namespace

kernel_slots kernels_32(scoring_mode mode) {
  switch (mode) {
    case scoring_mode::uniform:
      return slots_of<narrow32, folded_uniform_cost>(32);
    case scoring_mode::word_weights:
      return slots_of<narrow32, word_weight_cost>(32);
    case scoring_mode::per_character:
      return slots_of<narrow32, field_weight_cost>(32);
    case scoring_mode::implied:
      return implied_slots_of<narrow32, field_weight_cost>(32);
  }
  return {};
}

kernel_slots kernels_64(scoring_mode mode) {
  return slots_for_mode<narrow64, folded_uniform_cost64>(mode, 64);
}

}  // namespace zeb
