#include "search/exact/packed_fields.h"

#include <bit>

#include "base/indices.h"

namespace zeb {
namespace {

/// Fills in the states; false if the field isn't to be used.
bool look_at_states(const search_data& data, single_state_field& field) {
  word states = 0;
  for (int t = 0; t < data.n; ++t) {
    const word cell = data.sets[at(t)].down[field.word_number] & field.mask;
    if (cell != field.mask) states |= cell;
  }
  word single = 0;
  for (int t = 0; t < data.n; ++t) {
    const word cell = data.sets[at(t)].down[field.word_number] & field.mask;
    if (cell == field.mask || cell == states) continue;
    if (!std::has_single_bit(cell)) return false;
    single |= cell;
  }
  field.states = std::popcount(single);
  return field.states > 1;
}

}  // namespace

std::vector<single_state_field> single_state_fields(const search_data& data) {
  std::vector<single_state_field> found;
  int record = 0;
  for (int g = 0; g < packing_groups; ++g) {
    for (int f = 0; f < data.field_count[at(g)]; ++f, ++record) {
      if (data.fields[at(g)][at(f)].character < 0 || data.field_weight[at(record)] == 0) continue;
      single_state_field field;
      field.word_number = data.group_start[at(g)] + f / fields_per_word[at(g)];
      field.shift = f % fields_per_word[at(g)] * field_bits[at(g)];
      field.mask = field_mask[at(g)] << field.shift;
      field.record = record;
      if (data.implied_on) {
        field.counter = data.counter_of[at(record)];
        const fit_counter& counter = data.counters[at(field.counter)];
        field.alone = counter.fields == 1 && counter.set < 0;
      }
      if (look_at_states(data, field)) found.push_back(field);
    }
  }
  return found;
}

}  // namespace zeb
