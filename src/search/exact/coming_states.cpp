#include "search/exact/coming_states.h"

#include <bit>

#include "base/indices.h"

namespace zeb {

coming_states::coming_states(const search_data& data, std::span<const single_state_field> fields)
    : words_(at(data.nwords)), states_(at(data.n) * at(data.nwords), 0) {
  for (int t = 0; t < data.n; ++t)
    for (const single_state_field& f : fields)
      states_[at(t) * words_ + at(f.word_number)] |= single_state(data, f, t);
}

int coming_states::steps_to_come(const single_state_field& field, const word* present,
                                 const word* rest) {
  const word there = present[field.word_number] & field.mask;
  const int states = std::popcount(rest[field.word_number] & ~there & field.mask);
  return there == 0 && states > 0 ? states - 1 : states;
}

/// A state is one bit of its field, so the field is filled by copying that bit upwards and
/// downwards, by doubling.
void coming_states::without_new_states(const search_data& data, int terminal, const word* present,
                                       word* out) const {
  const word* const down = data.sets[at(terminal)].down;
  const word* const states = states_of(terminal);
  const std::size_t end0 = at(data.layout.end0);
  const std::size_t end1 = at(data.layout.end1);
  const std::size_t end2 = at(data.layout.end2);
  const auto absent = [&](std::size_t w) { return states[w] & ~present[w]; };
  for (std::size_t w = 0; w < end0; ++w) {
    const word x = absent(w);
    const word low = (x | x >> 1) & 0x55555555U;
    out[w] = down[w] | low * 0x3;
  }
  for (std::size_t w = end0; w < end1; ++w) {
    word x = absent(w);
    x |= x >> 1;
    out[w] = down[w] | ((x | x >> 2) & 0x11111111U) * 0xf;
  }
  for (std::size_t w = end1; w < end2; ++w) {
    word x = absent(w);
    x |= x >> 1;
    x |= x >> 2;
    out[w] = down[w] | ((x | x >> 4) & 0x01010101U) * 0xff;
  }
  for (std::size_t w = end2; w < words_; ++w) out[w] = absent(w) ? ~word{0} : down[w];
}

}  // namespace zeb
