#include "engine/packing/copied_fields.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/arena.h"
#include "base/indices.h"
#include "engine/packing/set_memory.h"
#include "engine/wide/wide_sets.h"

namespace zeb {
namespace {

/// Copies the fields of one entry from word to word, for all terminals.
void copy_fields(const search_data& inner, const search_data& outer, const pack_entry& to,
                 const pack_entry& from, std::span<const word* const> terminals) {
  const std::size_t g = at(from.group);
  const int in_word = fields_per_word[g];
  const int width = field_bits[g];
  const word mask = field_mask[g];
  for (int f = 0; f < from.fields * from.repeat; ++f) {
    const int source = from.first_field + f;
    const int place = to.first_field + f;
    inner.fields[g][at(place)] = outer.fields[g][at(source)];
    const std::size_t source_word = at(outer.group_start[g] + source / in_word);
    const std::size_t word_here = at(inner.group_start[g] + place / in_word);
    const int source_shift = source % in_word * width;
    const int shift = place % in_word * width;
    for (std::size_t t = 0; t < terminals.size(); ++t) {
      word& w = inner.sets[t].down[word_here];
      w = (w & ~(mask << shift)) | ((terminals[t][source_word] >> source_shift & mask) << shift);
    }
  }
}

}  // namespace

std::vector<std::int32_t> numbers_of(const std::vector<std::uint8_t>& kept) {
  std::vector<std::int32_t> numbers;
  for (std::size_t i = 0; i < kept.size(); ++i)
    if (kept[i]) numbers.push_back(static_cast<std::int32_t>(i));
  return numbers;
}

void place_entries(search_data& inner, const search_data& outer,
                   const std::vector<std::uint8_t>& kept) {
  inner.entries = alloc_low<pack_entry>(numbers_of(kept).size());
  std::size_t next = 0;
  for (std::size_t i = 0; i < kept.size(); ++i)
    if (kept[i]) inner.entries[next++] = outer.entries[i];
  // The most variable ones come first in the words, if not in the list.
  std::vector<pack_entry*> by_place;
  for (pack_entry& e : inner.entries) by_place.push_back(&e);
  std::sort(by_place.begin(), by_place.end(), [](const pack_entry* a, const pack_entry* b) {
    return a->first_field < b->first_field;
  });
  std::array<int, packing_groups> count{};  // fields
  for (pack_entry* const e : by_place) {
    e->first_field = count[at(e->group)];
    count[at(e->group)] += e->fields * e->repeat;
  }
  lay_out_groups(inner, count);
}

void copy_packed_characters(search_data& inner, const search_data& outer,
                            const std::vector<std::uint8_t>& kept,
                            std::span<const word* const> terminals) {
  empty_field_records(inner);
  for (std::size_t t = 0; t < terminals.size(); ++t)
    std::memset(inner.sets[t].down, 0xff, at(inner.nwords) * sizeof(word));
  std::size_t next = 0;
  for (std::size_t i = 0; i < kept.size(); ++i)
    if (kept[i]) copy_fields(inner, outer, inner.entries[next++], outer.entries[i], terminals);
}

void copy_wide_parts(search_data& inner, const search_data& outer,
                     const std::function<bool(const wide_character&)>& wanted) {
  inner.wide.parts = alloc_low<wide_part>(outer.wide.parts.size());
  for (std::size_t i = 0; i < outer.wide.parts.size(); ++i) {
    const wide_part& part = outer.wide.parts[i];
    std::vector<wide_character> list;
    for (const wide_character& c : part.characters)
      if (!wanted || wanted(c)) list.push_back(c);
    const std::span<wide_character> own = alloc_low<wide_character>(list.size());
    std::copy(list.begin(), list.end(), own.begin());
    inner.wide.parts[i] = {part.kind, own};
  }
  allocate_wide_sets(inner);
}

}  // namespace zeb
