#include "engine/packing/cell_encoding.h"

#include <bit>

#include "matrix/matrix.h"

namespace zeb {
namespace {

std::uint32_t bit(int state) { return std::uint32_t{1} << state; }
int lowest(std::uint32_t states) { return std::countr_zero(states); }
int highest(std::uint32_t states) { return 31 - std::countl_zero(states); }

/// Puts `value` (the bits of one field) at the `repeat` places of field number `f` of an entry.
void write_field(const search_data& data, const pack_entry& entry, int f, std::uint32_t value,
                 word* down) {
  const auto group = static_cast<std::size_t>(entry.group);
  const int in_word = fields_per_word[group];
  const int width = field_bits[group];
  for (int r = 0; r < entry.repeat; ++r) {
    const int place = entry.first_field + f * entry.repeat + r;
    word& w = down[data.group_start[group] + place / in_word];
    const int shift = place % in_word * width;
    w = (w & ~(field_mask[group] << shift)) | (value << shift);
  }
}

int encode_unordered(const search_data& data, const pack_entry& entry,
                     const informative_states& states, std::uint32_t c, word* down) {
  if (states.full != 0 && (c & states.full) == states.full) return 0;
  c &= ~states.unique;
  if (c == 0) return 1;
  std::uint32_t bits = 0;
  for (std::uint32_t rest = c; rest; rest &= rest - 1)
    bits |= bit(std::popcount(states.kept & (bit(lowest(rest)) - 1)));
  write_field(data, entry, 0, bits, down);
  return 0;
}

/// One field for each threshold between the lowest and the highest state: bit 1 where the state is
/// above it, bit 0 where it isn't. A cell stands for the range from its lowest to its highest
/// state.
int encode_additive(const search_data& data, const pack_entry& entry,
                    const informative_states& states, std::uint32_t c, word* down) {
  const int low_end = lowest(states.kept);
  const int high_end = highest(states.kept);
  int steps = 0;
  int from = lowest(c);
  int to = highest(c);
  if (to < low_end) steps = low_end - to;
  if (from > high_end) steps = from - high_end;
  from = from < low_end ? low_end : from > high_end ? high_end : from;
  to = to < low_end ? low_end : to > high_end ? high_end : to;
  for (int f = 0; f < entry.fields; ++f) {
    const int threshold = low_end + f;  // between this state and the next
    std::uint32_t bits = 0;
    if (from <= threshold) bits |= 1;
    if (to > threshold) bits |= 2;
    write_field(data, entry, f, bits, down);
  }
  return steps;
}

/// One field for each edge: bit 1 where the state is beyond it.
int encode_by_edges(const search_data& data, const pack_entry& entry,
                    const informative_states& states, std::uint32_t c, word* down) {
  for (int f = 0; f < entry.fields; ++f) {
    const std::uint32_t far = states.edges[static_cast<std::size_t>(f)];
    write_field(data, entry, f, ((c & ~far) ? 1U : 0U) | ((c & far) ? 2U : 0U), down);
  }
  return 0;
}

}  // namespace

int encode_cell(const search_data& data, const pack_entry& entry, const informative_states& states,
                std::uint32_t cell, word* down) {
  if (says_nothing(entry.character, cell) || states.kept == 0) return 0;
  if (!states.edges.empty()) return encode_by_edges(data, entry, states, cell, down);
  return states.additive ? encode_additive(data, entry, states, cell, down)
                         : encode_unordered(data, entry, states, cell, down);
}

}  // namespace zeb
